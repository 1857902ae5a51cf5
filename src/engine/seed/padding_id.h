// The kinds of padding.
#pragma once

namespace vrno {

// What is appended to fill the last block. Decryption leaves it there unless the kind says that it is removed.
enum ZIRC_Padding : int {
    ZIRC_PAD_NONE = 0,
    ZIRC_PAD_RANDOM = 2,
    ZIRC_PAD_ZERO = 3,
    ZIRC_PAD_BIT = 4, // 0x80 and zeros; removed
    ZIRC_PAD_55 = 5,
    ZIRC_PAD_FF = 6,
    ZIRC_PAD_LENGTH = 8,            // bytes with the value of their count; checked and removed; also 9
    ZIRC_PAD_LENGTH_MINUS_ONE = 10, // one less; checked and removed; also 11
};

} // namespace vrno
