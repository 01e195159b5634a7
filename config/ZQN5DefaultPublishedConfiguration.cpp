#include "config/ZQN5DefaultPublishedConfiguration.h"

namespace vendril {

// One line for each object, then the table of their offsets and the trailer.
// clang-format off
const unsigned char ZQN5DefaultPublishedConfiguration_plist[] = {
    // Header.
    'b', 'p', 'l', 'i', 's', 't', '0', '0',
    // Object 0, the root: a dictionary of 7 entries, first the keys, then the values.
    0xD7, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 11, 10, 10,
    // Objects 1 to 7, the keys: 0x50 plus the length, or 0x5F and the length behind it.
    0x57, 'A', 'p', 'p', 'N', 'a', 'm', 'e',
    0x5A, 'A', 'p', 'p', 'V', 'e', 'r', 's', 'i', 'o', 'n',
    0x5C, 'i', 's', 'M', 'e', 'e', 't', 'M', 'e', 'O', 'n', 'l', 'y',
    0x58, 'S', 'I', 'P', 'R', 'e', 'a', 'd', 'y',
    0x5B, 'i', 's', 'T', 'e', 'm', 'p', 'o', 'r', 'a', 'r', 'y',
    0x5C, 'v', 'i', 'd', 'e', 'o', 'C', 'a', 'p', 'a', 'b', 'l', 'e',
    0x5D, 'm', 'e', 'e', 't', 'm', 'e', 'C', 'a', 'p', 'a', 'b', 'l', 'e',
    // Objects 8 to 11, the values: the name, the version, true and false.
    0x5F, 0x10, 21,
    'B', 'r', 'e', 'l', 't', 'o', ' ', 'O', 'r', 'v', 'a', 'n', 't', 'a', ' ',
    '3', '.', '2', '1', '.', '0',
    0x5C, '3', '.', '2', '1', '.', '0', '.', '6', '4', '.', '2', '4',
    0x09,
    0x08,
    // The offset of each object.
    8, 23, 31, 42, 55, 64, 76, 89, 103, 127, 140, 141,
    // Trailer: unused; bytes in an offset; bytes in a reference; number of objects; number of the
    // root; where the offsets begin.
    0, 0, 0, 0, 0, 0, 1, 1,
    0, 0, 0, 0, 0, 0, 0, 12,
    0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 142,
};
// clang-format on

const unsigned int ZQN5DefaultPublishedConfiguration_plist_len =
    sizeof ZQN5DefaultPublishedConfiguration_plist;

}  // namespace vendril
