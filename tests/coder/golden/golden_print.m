function golden_print(fid, varargin)
  % Entries "name: v1 v2 ..." (%.17g, column-major), a line per name-value pair. Every gen_X.m
  % writes X.txt; run it here: octave --no-gui --quiet gen_X.m (to standard output: > X.txt).
  for i = 1:2:numel(varargin)
    fprintf(fid, '%s:%s\n', varargin{i}, sprintf(' %.17g', varargin{i + 1}));
  end
end
