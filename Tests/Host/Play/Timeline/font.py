"""Measures text with a TrueType font."""

import struct


class Font:
    def __init__(self, path):
        with open(path, "rb") as file:
            self._data = file.read()
        self._table_offsets = {}
        for index in range(self._unpack("H", 4)[0]):
            tag, _, offset, _ = self._unpack("4sIII", 12 + 16 * index)
            self._table_offsets[tag.decode()] = offset
        self._units_per_em = self._unpack("H", self._table_offsets["head"] + 18)[0]
        self._width_count = self._unpack("H", self._table_offsets["hhea"] + 34)[0]
        self._glyphs = self._read_glyphs()

    def width(self, text, size):
        """Returns the width of a line of text, without kerning. A character that is not in the font
        has the width of the glyph for missing characters."""
        widths = (self._glyph_width(self._glyphs.get(ord(character), 0)) for character in text)
        return sum(widths) * size / self._units_per_em

    def _unpack(self, value_format, offset):
        return struct.unpack_from(">" + value_format, self._data, offset)

    def _glyph_width(self, glyph):
        # A glyph without a width in the table "hmtx" has the last width of this table.
        index = min(glyph, self._width_count - 1)
        return self._unpack("H", self._table_offsets["hmtx"] + 4 * index)[0]

    def _read_glyphs(self):
        """Returns a dictionary from code points to glyph numbers."""
        cmap = self._table_offsets["cmap"]
        for index in range(self._unpack("H", cmap + 2)[0]):
            platform, encoding, offset = self._unpack("HHI", cmap + 4 + 8 * index)
            if (platform, encoding) == (3, 1):  # Windows, Unicode
                return self._read_segments(cmap + offset)
        raise ValueError("the font has no table of Unicode characters")

    def _read_segments(self, table):
        """Reads the character table at the offset `table`. Returns a dictionary from code points to glyph
        numbers. A segment of the table is a range of characters."""
        count = self._unpack("H", table + 6)[0] // 2
        # The offsets of four arrays with one element for each segment.
        arrays = (table + 14, table + 16 + 2 * count, table + 16 + 4 * count, table + 16 + 6 * count)
        glyphs = {}
        for index in range(count):
            last_character, first_character, delta, offset = (
                self._unpack("H", array + 2 * index)[0] for array in arrays
            )
            # 0xFFFF is not a character. It only marks the last segment.
            for character in range(first_character, min(last_character, 0xFFFE) + 1):
                glyph = character
                if offset != 0:
                    # `offset` is relative to its own position in the font.
                    glyph_offset = arrays[3] + 2 * index + offset + 2 * (character - first_character)
                    glyph = self._unpack("H", glyph_offset)[0]
                # Glyph 0 is the glyph for missing characters.
                glyphs[character] = (glyph + delta) & 0xFFFF if offset == 0 or glyph else 0
        return glyphs
