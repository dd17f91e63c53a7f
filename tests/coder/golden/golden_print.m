function golden_print(fid, varargin)
  % Golden entries "name: v1 v2 ..." (%.17g), a line per name-value pair. Every gen_X.m writes
  % X.txt; run it from this folder: octave --no-gui --quiet gen_X.m (to standard output: > X.txt).
  for i = 1:2:numel(varargin)
    v = varargin{i + 1};
    fprintf(fid, '%s:', varargin{i});
    fprintf(fid, ' %.17g', v(:));
    fprintf(fid, '\n');
  end
end
