function bitmap = text_bitmap(text, scale)
%TEXT_BITMAP  A line of text as a logical bitmap, in a built-in 5 x 7 font.
%   BITMAP = TEXT_BITMAP(TEXT, SCALE) draws TEXT (letters are drawn upper
%   case; digits, space and . / - + : = , ( ) % x are known, anything else is
%   blank) with every font pixel SCALE x SCALE pixels, one blank column
%   between characters: 7*SCALE rows, 6*SCALE*numel(TEXT) columns. The demo
%   labels its picture with it, so that no graphics toolkit is needed.
  persistent glyphs
  if isempty(glyphs)
    glyphs = font_table();
  end
  text = upper(text);
  bitmap = false(7, 6 * numel(text));
  for c = 1:numel(text)
    if isKey(glyphs, text(c))
      columns = glyphs(text(c));
      for col = 1:5
        bitmap(:, 6 * (c - 1) + col) = bitand(columns(col), 2 .^ (0:6)') > 0;
      end
    end
  end
  bitmap = kron(bitmap, true(scale));
end

% Five columns per character, bit 0 the top row.
function glyphs = font_table()
  table = {
    '0', [62 81 73 69 62]; '1', [0 66 127 64 0]; '2', [66 97 81 73 70]; '3', [33 65 69 75 49]
    '4', [24 20 18 127 16]; '5', [39 69 69 69 57]; '6', [60 74 73 73 48]; '7', [1 113 9 5 3]
    '8', [54 73 73 73 54]; '9', [6 73 73 41 30]; 'A', [126 17 17 17 126]; 'B', [127 73 73 73 54]
    'C', [62 65 65 65 34]; 'D', [127 65 65 34 28]; 'E', [127 73 73 73 65]; 'F', [127 9 9 9 1]
    'G', [62 65 73 73 122]; 'H', [127 8 8 8 127]; 'I', [0 65 127 65 0]; 'J', [32 64 65 63 1]
    'K', [127 8 20 34 65]; 'L', [127 64 64 64 64]; 'M', [127 2 12 2 127]; 'N', [127 4 8 16 127]
    'O', [62 65 65 65 62]; 'P', [127 9 9 9 6]; 'Q', [62 65 81 33 94]; 'R', [127 9 25 41 70]
    'S', [70 73 73 73 49]; 'T', [1 1 127 1 1]; 'U', [63 64 64 64 63]; 'V', [31 32 64 32 31]
    'W', [63 64 56 64 63]; 'X', [99 20 8 20 99]; 'Y', [7 8 112 8 7]; 'Z', [97 81 73 69 67]
    ' ', [0 0 0 0 0]; '.', [0 96 96 0 0]; '/', [32 16 8 4 2]; '-', [8 8 8 8 8]
    '+', [8 8 62 8 8]; ':', [0 54 54 0 0]; '=', [20 20 20 20 20]; ',', [0 80 48 0 0]
    '(', [0 28 34 65 0]; ')', [0 65 34 28 0]; '%', [35 19 8 100 98]
  };
  glyphs = containers.Map(table(:, 1), table(:, 2));
end
