"""Measures text with a TrueType font."""

import struct


class Font:
    def __init__(self, path):
        with open(path, "rb") as file:
            self._data = file.read()
        self._tables = {}
        for index in range(self._numbers("H", 4)[0]):
            tag, _, offset, _ = self._numbers("4sIII", 12 + 16 * index)
            self._tables[tag.decode()] = offset
        self._units_per_em = self._numbers("H", self._tables["head"] + 18)[0]
        self._width_count = self._numbers("H", self._tables["hhea"] + 34)[0]
        self._glyphs = self._read_glyphs()

    def width(self, text, size):
        """Returns the width of a line of text, without kerning. A character that is not in the font
        has the width of the glyph for missing characters."""
        widths = (self._advance(self._glyphs.get(ord(character), 0)) for character in text)
        return sum(widths) * size / self._units_per_em

    def _numbers(self, number_format, offset):
        return struct.unpack_from(">" + number_format, self._data, offset)

    def _advance(self, glyph):
        # A glyph without a width in the table has the last width of the table.
        index = min(glyph, self._width_count - 1)
        return self._numbers("H", self._tables["hmtx"] + 4 * index)[0]

    def _read_glyphs(self):
        """Returns a dictionary from code points to glyph numbers."""
        cmap = self._tables["cmap"]
        for index in range(self._numbers("H", cmap + 2)[0]):
            platform, encoding, offset = self._numbers("HHI", cmap + 4 + 8 * index)
            if (platform, encoding) == (3, 1):  # Windows, Unicode
                return self._read_segments(cmap + offset)
        raise ValueError("the font has no table of Unicode characters")

    def _read_segments(self, table):
        """Returns a dictionary from code points to glyph numbers. A segment of the table is a range of
        characters."""
        count = self._numbers("H", table + 6)[0] // 2
        arrays = (table + 14, table + 16 + 2 * count, table + 16 + 4 * count, table + 16 + 6 * count)
        glyphs = {}
        for index in range(count):
            last_character, first_character, delta, offset = (
                self._numbers("H", array + 2 * index)[0] for array in arrays
            )
            for character in range(first_character, min(last_character, 0xFFFE) + 1):
                glyph = character
                if offset != 0:
                    glyph_offset = arrays[3] + 2 * index + offset + 2 * (character - first_character)
                    glyph = self._numbers("H", glyph_offset)[0]
                glyphs[character] = (glyph + delta) & 0xFFFF if offset == 0 or glyph else 0
        return glyphs
