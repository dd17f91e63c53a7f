function golden_print(fid, name, v)
  % One golden entry "name: v1 v2 ..." (%.17g). Every gen_X.m writes X.txt; run it from this
  % folder: octave --no-gui --quiet gen_X.m (those writing to standard output: > X.txt).
  fprintf(fid, '%s:', name);
  fprintf(fid, ' %.17g', v(:));
  fprintf(fid, '\n');
end
