#!/usr/bin/env python3
"""Generates kep/base/KepCharacterTables.inc, the character property data of
KepCharacter, from the Unicode character database (UnicodeData.txt and
PropList.txt; Debian's unicode-data package installs them in /usr/share/unicode).

The output lists, for U+0000..U+FFFF, the runs of equal 32-bit property words and
the case mappings too far away (or too irregular) for the word's 10-bit case
difference. KepCharacter::init() expands the runs into its three lookup tables.

Property word:
  bits 0-4    character type (general category, numbered as KepCharacter's
              constants)
  bit 5       the case mappings are in the exception list, not in bits 22-31
  bits 9-13   signed digit offset: (u + offset) & 31 is the digit value of a
              decimal digit, that value + 10 the value of a Latin letter
  bits 14-15  1 for decimal digits, 3 for letters that are digits above radix 10
  bits 16-18  4 for whitespace (White_Space, without the no-break spaces)
  bit 20      an upper-case mapping exists (upper = u - d)
  bit 21      a lower-case mapping exists (lower = u + d)
  bits 22-31  signed case difference d

Usage: tools/gen_character_tables.py [UCD-dir] [output-file]
"""

import os
import sys

CATEGORIES = {
    'Cn': 0, 'Lu': 1, 'Ll': 2, 'Lt': 3, 'Lm': 4, 'Lo': 5, 'Mn': 6, 'Me': 7, 'Mc': 8,
    'Nd': 9, 'Nl': 10, 'No': 11, 'Zs': 12, 'Zl': 13, 'Zp': 14, 'Cc': 15, 'Cf': 16,
    'Co': 18, 'Cs': 19, 'Pd': 20, 'Ps': 21, 'Pe': 22, 'Pc': 23, 'Po': 24, 'Sm': 25,
    'Sc': 26, 'Sk': 27, 'So': 28, 'Pi': 29, 'Pf': 30,
}
# Spaces that do not break a line are not whitespace for splitting text.
NO_BREAK_SPACES = {0x00A0, 0x2007, 0x202F}
CASE_EXCEPTION_BIT = 1 << 5
WHITESPACE_CLASS = 4 << 16
UPPER_BIT = 1 << 20
LOWER_BIT = 1 << 21
BMP = 0x10000


def read_unicode_data(path):
    """Answers {code: (category, decimal value or None, upper, lower)} for the BMP."""
    chars = {}
    first = None
    with open(path, encoding='utf-8') as f:
        for line in f:
            fields = line.rstrip('\n').split(';')
            if len(fields) < 15:
                continue
            code = int(fields[0], 16)
            if code >= BMP:
                continue
            entry = (fields[2], int(fields[6]) if fields[6] else None,
                     int(fields[12], 16) if fields[12] else None,
                     int(fields[13], 16) if fields[13] else None)
            name = fields[1]
            if name.endswith(', First>'):
                first = code
                continue
            if name.endswith(', Last>'):
                for c in range(first, code + 1):
                    chars[c] = (entry[0], None, None, None)
                first = None
                continue
            chars[code] = entry
    return chars


def read_white_space(path):
    spaces = set()
    with open(path, encoding='utf-8') as f:
        for line in f:
            line = line.split('#', 1)[0].strip()
            if not line:
                continue
            codes, prop = [part.strip() for part in line.split(';')]
            if prop != 'White_Space':
                continue
            lo, _, hi = codes.partition('..')
            for c in range(int(lo, 16), int(hi or lo, 16) + 1):
                if c < BMP:
                    spaces.add(c)
    return spaces - NO_BREAK_SPACES


def letter_digit_value(u):
    for base in (0x41, 0x61, 0xFF21, 0xFF41):  # A-Z, a-z and their full-width forms
        if base <= u < base + 26:
            return 10 + u - base
    return None


def signed_bits(value, bits):
    """Two's-complement field of `bits` bits holding `value`."""
    return value & ((1 << bits) - 1)


def property_word(u, chars, spaces, exceptions):
    category, decimal, upper, lower = chars.get(u, ('Cn', None, None, None))
    word = CATEGORIES[category]
    if category == 'Nd' and decimal is not None:
        offset = (decimal - u) % 32
        word |= signed_bits(offset - 32 if offset >= 16 else offset, 5) << 9 | 1 << 14
    else:
        value = letter_digit_value(u)
        if value is not None:
            offset = (value - 10 - u) % 32
            word |= signed_bits(offset - 32 if offset >= 16 else offset, 5) << 9 | 3 << 14
    if u in spaces:
        word |= WHITESPACE_CLASS
    if upper is not None or lower is not None:
        word |= (UPPER_BIT if upper is not None else 0) | (LOWER_BIT if lower is not None else 0)
        diffs = set()
        if lower is not None:
            diffs.add(lower - u)
        if upper is not None:
            diffs.add(u - upper)
        d = diffs.pop() if len(diffs) == 1 else None
        if d is None or not -512 <= d <= 511:
            word |= CASE_EXCEPTION_BIT
            exceptions.append((u, lower if lower is not None else u,
                               upper if upper is not None else u))
        else:
            word |= signed_bits(d, 10) << 22
    return word


def check_three_levels(words):
    """The word table must fit the byte-indexed blocks and 16-bit pair indexes."""
    pairs, blocks = {}, {}
    for b in range(BMP // 64):
        block = []
        for p in range(32):
            u = b * 64 + p * 2
            block.append(pairs.setdefault((words[u], words[u + 1]), len(pairs)))
        blocks.setdefault(tuple(block), len(blocks))
    if len(blocks) > 256 or 2 * len(pairs) > 32767:
        sys.exit(f'tables do not fit: {len(blocks)} blocks, {len(pairs)} pairs')
    return len(blocks), len(pairs)


def main():
    ucd = sys.argv[1] if len(sys.argv) > 1 else '/usr/share/unicode'
    here = os.path.dirname(os.path.abspath(__file__))
    out = sys.argv[2] if len(sys.argv) > 2 else os.path.join(
        here, '..', 'kep', 'base', 'KepCharacterTables.inc')
    with open(os.path.join(ucd, 'PropList.txt'), encoding='utf-8') as f:
        version = f.readline().strip().lstrip('# ').replace('PropList-', '').replace('.txt', '')
    chars = read_unicode_data(os.path.join(ucd, 'UnicodeData.txt'))
    spaces = read_white_space(os.path.join(ucd, 'PropList.txt'))
    exceptions = []
    words = [property_word(u, chars, spaces, exceptions) for u in range(BMP)]
    block_count, pair_count = check_three_levels(words)

    runs = [(u, words[u]) for u in range(BMP) if u == 0 or words[u] != words[u - 1]]
    lines = [
        '// Character properties of U+0000..U+FFFF, Unicode %s.' % version,
        '// Generated by tools/gen_character_tables.py from UnicodeData.txt and',
        '// PropList.txt; do not edit. %d runs, %d case exceptions; the lookup tables' %
        (len(runs), len(exceptions)),
        '// built from them hold %d blocks and %d pairs.' % (block_count, pair_count),
        '',
        'static constexpr char kKepCharacterUnicodeVersion[] = "%s";' % version,
        '',
        '// {first unit of the run, property word}',
        'static constexpr KepCharacterRun kKepCharacterRuns[] = {',
    ]
    for i in range(0, len(runs), 4):
        lines.append('    ' + ' '.join('{0x%04X, 0x%08X},' % r for r in runs[i:i + 4]))
    lines += ['};', '', '// {unit, lower case, upper case}, sorted by unit',
              'static constexpr KepCaseException kKepCaseExceptions[] = {']
    for i in range(0, len(exceptions), 3):
        lines.append('    ' + ' '.join('{0x%04X, 0x%04X, 0x%04X},' % e
                                       for e in exceptions[i:i + 3]))
    lines.append('};')
    with open(out, 'w', encoding='utf-8') as f:
        f.write('\n'.join(lines) + '\n')
    print(f'{out}: {len(runs)} runs, {len(exceptions)} exceptions, '
          f'{block_count} blocks, {pair_count} pairs')


if __name__ == '__main__':
    main()
