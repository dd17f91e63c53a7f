function x = lcg_signal(seed, n)
  % Park-Miller s = mod(16807 s, 2^31 - 1), exact in doubles, in [-0.5, 0.5): as lcgSignal.
  x = zeros(1, n); s = seed;
  for k = 1:n
    s = mod(16807 * s, 2147483647); x(k) = s / 2147483647 - 0.5;
  end
end
