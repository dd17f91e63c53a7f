function golden_print(fid, name, v)
  % One golden entry: "name: v1 v2 ..." with every value printed with %.17g.
  fprintf(fid, '%s:', name);
  fprintf(fid, ' %.17g', v(:));
  fprintf(fid, '\n');
end
