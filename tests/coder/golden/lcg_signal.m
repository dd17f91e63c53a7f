function x = lcg_signal(seed, n)
  % Deterministic test signal that the C++ tests rebuild bit for bit (lcgSignal in tests/coder/
  % support/numeric_compare.h): the Park-Miller sequence s = mod(16807 s, 2^31 - 1), every step exact
  % in doubles, mapped to [-0.5, 0.5) by one correctly rounded division.
  x = zeros(1, n);
  s = seed;
  for k = 1:n
    s = mod(16807 * s, 2147483647);
    x(k) = s / 2147483647 - 0.5;
  end
end
