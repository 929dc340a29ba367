#include "host/codec/BsacTables.h"

#include <cstddef>

namespace codec {

namespace {

// A cumulative model in memory, with what CumulativeModel asks for around it.
template <std::size_t kSize> struct Model {
    std::array<std::uint16_t, 1 + (kSize + kModelGroup - 1) / kModelGroup * kModelGroup> entries{kProbabilityScale};

    constexpr explicit Model(const std::uint16_t (&model)[kSize]) {
        for (std::size_t k = 0; k < kSize; ++k)
            entries[1 + k] = model[k];
    }
    constexpr operator CumulativeModel() const { return {entries.data() + 1, kSize}; }
};

// Tables 4.A.44 to 4.A.50: cband_si of coding bands other than 0, models 0..6; the symbol is the cband_si.

constexpr Model kCbandSi0({16118, 15193, 6930, 4771, 0});

constexpr Model kCbandSi1({15697, 13230, 7423, 4023, 2020, 555, 0});

constexpr Model kCbandSi2({14919, 10988, 7685, 4918, 3709, 2144, 1504, 1098, 0});

constexpr Model kCbandSi3({14014, 10158, 8436, 5961, 5333, 3398, 2771, 2184, 1305, 523, 0});

constexpr Model kCbandSi4({14723, 11895, 11011, 7912, 7673, 4871, 4580, 2893, 2380, 1175, 1093, 64, 0});

constexpr Model kCbandSi5({12399, 9374, 8022, 6211, 5658, 4141, 3948, 3201, 2802, 1960, 1818, 1108, 1043, 22, 0});

constexpr Model kCbandSi6({12719, 8193, 5677, 4734, 3845, 3124, 2959, 2657, 2389, 2085, 2013, 1705,
                           1672,  1371, 1355, 759,  408,  119,  16,   12,   8,    4,    0});

// Table 4.A.51: cband_si of coding band 0 of a group.

constexpr Model kCbandSiBand0({16376, 16368, 16360, 16352, 16343, 16177, 15575, 15305, 12404, 11215, 8987, 5083,
                               3409,  1539,  1100,  128,   48,    40,    32,    24,    16,    8,     0});

// Tables 4.A.37 to 4.A.43: scalefactor differences, models 1..7; the symbol is the difference. The same
// models carry noise energy differences and intensity positions.

constexpr Model kScalefactor1({1874, 973, 333, 0});

constexpr Model kScalefactor2({4399, 3559, 2699, 1985, 1146, 570, 212, 0});

constexpr Model kScalefactor3({8039, 7263, 6360, 5461, 4629, 3764, 2780, 1858, 1032, 486, 223, 82, 50, 35, 12, 0});

constexpr Model kScalefactor4({9487, 8888, 8275, 7659, 6917, 6253, 5599, 4825, 3959, 3073, 2099, 1293, 581, 140, 51,
                               0});

constexpr Model kScalefactor5({2216, 1870, 1593, 1416, 1164, 975, 814, 626, 444, 318, 228, 151, 105, 67, 47, 41,
                               32,   27,   24,   21,   18,   15,  13,  12,  10,  9,   7,   6,   4,   3,  1,  0});

constexpr Model kScalefactor6({3114, 2463, 2057, 1772, 1539, 1341, 1169, 1038, 916, 778, 677, 601, 514, 444, 368, 307,
                               258,  201,  151,  115,  79,   55,   34,   22,   15,  11,  9,   7,   5,   3,   1,   0});

constexpr Model kScalefactor7({15198, 14992, 14803, 14460, 14082, 13670, 13223, 12828, 12176, 11506, 10750, 9978, 9188,
                               8415,  7693,  6852,  6148,  5530,  4894,  4327,  3675,  3228,  2936,  2593,  2301, 1975,
                               1717,  1580,  1373,  1270,  1236,  1099,  910,   738,   669,   566,   549,   498,  463,
                               429,   412,   377,   360,   343,   326,   309,   291,   274,   257,   240,   223,  206,
                               188,   171,   154,   137,   120,   103,   85,    68,    51,    34,    17,    0});

// Table 4.A.52: ms_used (ms_mask_present 1).

constexpr Model kMsUsed({11469, 0});

// Table 4.A.53: stereo_info (ms_mask_present 3).

constexpr Model kStereoInfo({13926, 4096, 1638, 0});

// Table 4.A.54: noise_flag.

constexpr Model kNoiseFlag({8192, 0});

// Table 4.A.55: noise_mode.

constexpr Model kNoiseMode({12288, 8192, 4096, 0});

// The 512 values of the start of the noise energy are equally probable.
constexpr Model<512> MakeNoiseEnergyModel() {
    std::uint16_t model[512]{};
    for (std::size_t k = 0; k < std::size(model); ++k)
        model[k] = static_cast<std::uint16_t>(kProbabilityScale - 32 * (k + 1));
    return Model(model);
}
constexpr Model kNoiseEnergy = MakeNoiseEnergyModel();

// Tables 4.A.56 to 4.A.65: p0 of a magnitude bit. kZero: lines whose higher bits are all 0, a row for each
// distance d from the top plane (3 stands for 3 and more; row 0 needs contexts 0..14 only). kNonzero: the
// other lines, rows for d = 1, 2, 3, 4 and more, with 1, 3, 7 and 16 entries. Tables 4.A.66 to 4.A.77
// repeat 4.A.64 and 4.A.65.

// Table 4.A.56: magnitude bits, table 1.
constexpr std::uint16_t kZero1[][65] = {
    {14592, 14848, 12032, 15104, 12032, 14080, 11264, 15104, 12288, 13824, 11520, 14592, 12032, 14080, 11264}};

// Table 4.A.57: magnitude bits, table 2.
constexpr std::uint16_t kZero2[][65] = {
    {10240, 10240, 9472, 10496, 9728, 9984, 8960, 10752, 9984, 10240, 9216, 10240, 9472, 9728, 8704}};

// Table 4.A.58: magnitude bits, table 3.
constexpr std::uint16_t kZero3[][65] = {
    {15616, 15616, 13056, 15616, 13056, 15104, 13056, 15616, 12800, 15104, 12544, 15872, 14080, 15360, 13056},
    {14080, 14848, 10240, 15104, 9728, 11264, 9216, 14848, 9472, 11008, 9216,  12544, 8960,  10496, 8960, 12288, 11264,
     7424,  8704,  6656,  7168,  5632, 9984,  8704, 6656,  7424, 6400,  7168,  7680,  11264, 9216,  6400, 7680,  7936,
     7168,  11008, 9216,  10496, 9984, 9216,  4864, 6656,  8192, 6144,  8960,  9472,  7936,  11264, 8960, 13824, 10240,
     12544, 9472,  5120,  4608,  6144, 5120,  8448, 8704,  4096, 7680,  12288, 9728,  4608,  8704}};
constexpr std::uint16_t kNonzero3[][16] = {{12544}};

// Table 4.A.59: magnitude bits, table 4.
constexpr std::uint16_t kZero4[][65] = {
    {14592, 14848, 11776, 14848, 12032, 13312, 10752, 14848, 12288, 13568, 11264, 13824, 11008, 12544, 9472},
    {7680, 7424, 7168, 7424, 7168, 7424, 6912, 7424, 7680, 7680, 6656, 7680, 7168, 7424, 6912, 6656, 6656,
     6144, 6144, 6144, 5888, 5888, 6144, 6656, 5888, 5888, 6400, 6144, 5632, 5888, 5632, 5376, 5888, 6144,
     5632, 7168, 5888, 6400, 5888, 5376, 7168, 5376, 5632, 3840, 6144, 5120, 5888, 6656, 6656, 7680, 6144,
     7168, 6912, 5376, 4864, 5376, 5120, 5632, 5376, 5888, 5632, 6912, 6144, 5120, 5120}};
constexpr std::uint16_t kNonzero4[][16] = {{13824}};

// Table 4.A.60: magnitude bits, table 5.
constexpr std::uint16_t kZero5[][65] = {
    {15616, 15616, 12800, 15616, 13056, 15616, 13824, 15616, 13568, 15360, 13568, 16128, 15104, 16128, 15616},
    {15360, 15616, 11008, 15616, 10496, 13568, 11264, 15616, 11008, 13312, 11008, 14336, 11008,
     14080, 10752, 14592, 13312, 9216,  10752, 7168,  7936,  5632,  13568, 9472,  6656,  10752,
     8704,  11008, 10752, 13568, 9728,  6656,  9728,  9472,  9984,  13568, 11520, 14336, 12800,
     11776, 6144,  5632,  10496, 9472,  12544, 11264, 8960,  13824, 12288, 15360, 13056, 15104,
     13312, 5888,  6656,  7168,  6400,  10496, 10752, 9216,  9984,  15360, 13824, 7424,  12544},
    {13312, 14336, 9984, 14592, 9984, 12032, 8704, 14336, 9472, 11520, 8192, 13056, 8192, 10496, 7680, 11008, 8960,
     6656,  6656,  6912, 6144,  5888, 7680,  7168, 6912,  7168, 6912,  6656, 6144,  7424, 6912,  6144, 6400,  6912,
     6656,  7424,  7680, 7936,  6912, 7680,  4608, 5120,  6656, 4864,  7168, 6912,  6400, 8192,  7680, 12288, 10496,
     11520, 9472,  4864, 5888,  5120, 4864,  7680, 7936,  4352, 6400,  8448, 7680,  5376, 6656}};
constexpr std::uint16_t kNonzero5[][16] = {{12544}, {10752, 11008, 10240}};

// Table 4.A.61: magnitude bits, table 6.
constexpr std::uint16_t kZero6[][65] = {
    {14336, 14848, 11520, 14848, 11520, 13824, 11520, 14848, 11520, 13824, 11008, 14848, 10240, 13824, 9984},
    {11008, 12288, 9472, 12032, 9728, 11520, 9216, 12288, 9472, 11008, 9216, 11520, 9472, 10240, 9472,  10752, 10496,
     8960,  8704,  7680, 6912,  6400, 9728,  8960, 7936,  7424, 8704,  6912, 6144,  8448, 8448,  7424,  7424,  7936,
     7936,  10496, 9728, 10752, 8448, 8960,  6144, 6656,  7424, 8192,  7168, 6656,  7680, 10496, 10240, 12032, 8960,
     12032, 9728,  7424, 5888,  7424, 7168,  7680, 8448,  5888, 8704,  8960, 8960,  5120, 6656},
    {6400, 6400, 6400, 6912, 5888, 6912, 6656, 4096, 6400, 5632, 6144, 7680, 6400, 6656, 5888, 6912, 5888,
     5376, 5376, 5376, 5888, 5120, 6400, 5888, 5632, 5632, 4608, 4864, 4608, 5632, 5376, 5376, 4864, 5632,
     5632, 7168, 5120, 5888, 5632, 5120, 5120, 5120, 5376, 5120, 4864, 4864, 5376, 6144, 5632, 7936, 6656,
     7680, 6144, 5888, 5632, 5632, 4864, 5120, 4864, 4352, 5376, 5632, 5376, 4608, 4864}};
constexpr std::uint16_t kNonzero6[][16] = {{12288}, {11008, 10240, 9984}};

// Table 4.A.62: magnitude bits, table 7.
constexpr std::uint16_t kZero7[][65] = {
    {15616, 15616, 13568, 15872, 13568, 16128, 15104, 15872, 12800, 16128, 14848, 16128, 15616, 16128, 15104},
    {16128, 16128, 12800, 16128, 13568, 15872, 14080, 16128, 11520, 15360, 12288, 16128, 14080,
     15872, 13312, 16128, 14592, 9728,  12032, 7680,  9216,  5376,  14080, 12544, 6912,  9728,
     8960,  14848, 14592, 15872, 11008, 8704,  10240, 12032, 9472,  15872, 14080, 15872, 15616,
     14592, 6656,  13056, 9472,  10240, 15360, 14336, 11264, 15616, 14336, 16128, 15104, 16128,
     14848, 7680,  6912,  6144,  6144,  15104, 14848, 4608,  12032, 16128, 15104, 6912,  13568},
    {15360, 15872, 12288, 15872, 12544, 14848, 12544, 15616, 11264, 14592, 11776, 15360, 11520,
     15360, 12544, 15616, 12544, 8448,  11264, 9728,  10240, 7424,  11008, 10240, 10240, 9216,
     8704,  8448,  8960,  11520, 9472,  7936,  8448,  11008, 9984,  12800, 11520, 13312, 10752,
     13568, 6144,  6144,  7936,  7680,  11776, 10752, 9216,  12288, 11008, 15872, 15616, 15616,
     14848, 7680,  11008, 9728,  6400,  13312, 13568, 7168,  9728,  13056, 10752, 7168,  11008},
    {13568, 15104, 10496, 15104, 10752, 12544, 9984,  15104, 9728, 12032, 9216, 13312, 8960, 11520, 8192, 13056, 9984,
     7168,  9216,  7168,  7168,  6400,  9984,  10240, 6912,  7424, 8192,  6912, 6656,  8960, 7424,  5888, 7680,  9216,
     8448,  11008, 8448,  10240, 8192,  8960,  6912,  5376,  6912, 5120,  6656, 6656,  8192, 10752, 8704, 14080, 12032,
     12800, 10752, 5888,  5888,  5632,  6400,  9472,  8960,  5376, 6400,  9472, 8704,  5120, 6912}};
constexpr std::uint16_t kNonzero7[][16] = {{12032}, {10240, 10496, 9216}, {11520, 9472, 8960, 9472, 9472, 9728, 9216}};

// Table 4.A.63: magnitude bits, table 8.
constexpr std::uint16_t kZero8[][65] = {
    {15104, 15360, 13312, 15360, 13312, 14848, 12288, 15360, 12800, 14848, 12544, 15360, 12288, 14592, 12032},
    {13568, 14336, 11264, 14592, 11264, 13312, 11008, 14336, 11776, 13312, 11520, 13824, 10752,
     13056, 10240, 12544, 12544, 9728,  10496, 8192,  8960,  7936,  11520, 9728,  8192,  9728,
     8960,  9472,  8448,  11264, 9216,  7424,  9472,  9216,  9216,  12288, 10240, 12288, 10496,
     8704,  7680,  7168,  9472,  7424,  8960,  8960,  9472,  13056, 11264, 14080, 11008, 13312,
     11264, 7680,  7168,  8448,  6912,  10496, 10752, 7424,  9728,  12800, 10752, 8192,  9216},
    {10496, 11776, 9728, 12032, 9728, 11520, 9728, 11776, 9472, 11008, 9728, 12032, 8960, 10752, 8960, 10240, 10240,
     8448,  9216,  8192, 8192,  6912, 9216,  7936, 7168,  8448, 8704,  7424, 7168,  7936, 7168,  6400, 7680,  8448,
     8448,  10496, 8704, 8960,  8448, 7168,  6656, 6656,  8448, 8448,  7168, 7168,  7936, 9984,  9472, 11520, 9984,
     10752, 8960,  7168, 7424,  6656, 6656,  6912, 7424,  6144, 8192,  8960, 7936,  6400, 7168},
    {7168, 7680, 6912, 7680, 7168, 7680, 6400, 6656, 7936, 7936, 6400, 8192, 6656, 7936, 5888, 6912, 6656,
     6400, 6144, 6400, 6144, 5632, 6400, 6656, 6400, 5888, 6144, 5888, 6144, 5632, 5888, 5120, 5632, 6144,
     6656, 7168, 7168, 7168, 5888, 5888, 5376, 5376, 5632, 5632, 5376, 5120, 5888, 6912, 6656, 8960, 7168,
     7424, 6656, 5632, 5632, 5376, 5120, 6144, 5376, 4864, 5888, 6400, 5632, 5120, 5120}};
constexpr std::uint16_t kNonzero8[][16] = {{12800}, {11008, 10496, 10240}, {10240, 9472, 9472, 9984, 9472, 9728, 9472}};

// Table 4.A.64: magnitude bits, table 9.
constexpr std::uint16_t kZero9[][65] = {
    {15616, 15872, 13056, 15872, 13568, 15872, 14080, 15872, 13312, 15872, 13568, 16128, 15616, 16128, 15360},
    {16128, 16128, 12800, 16128, 13568, 15872, 14080, 16128, 11520, 15360, 12288, 16128, 14080,
     15872, 13312, 16128, 14592, 9728,  12032, 7680,  9216,  5376,  14080, 12544, 6912,  9728,
     8960,  14848, 14592, 15872, 11008, 8704,  10240, 12032, 9472,  15872, 14080, 15872, 15616,
     14592, 6656,  13056, 9472,  10240, 15360, 14336, 11264, 15616, 14336, 16128, 15104, 16128,
     14848, 7680,  6912,  6144,  6144,  15104, 14848, 4608,  12032, 16128, 15104, 6912,  13568},
    {15360, 15872, 12288, 15872, 12544, 14848, 12544, 15616, 11264, 14592, 11776, 15360, 11520,
     15360, 12544, 15616, 12544, 8448,  11264, 9728,  10240, 7424,  11008, 10240, 10240, 9216,
     8704,  8448,  8960,  11520, 9472,  7936,  8448,  11008, 9984,  12800, 11520, 13312, 10752,
     13568, 6144,  6144,  7936,  7680,  11776, 10752, 9216,  12288, 11008, 15872, 15616, 15616,
     14848, 7680,  11008, 9728,  6400,  13312, 13568, 7168,  9728,  13056, 10752, 7168,  11008},
    {13568, 15104, 10496, 15104, 10752, 12544, 9984,  15104, 9728, 12032, 9216, 13312, 8960, 11520, 8192, 13056, 9984,
     7168,  9216,  7168,  7168,  6400,  9984,  10240, 6912,  7424, 8192,  6912, 6656,  8960, 7424,  5888, 7680,  9216,
     8448,  11008, 8448,  10240, 8192,  8960,  6912,  5376,  6912, 5120,  6656, 6656,  8192, 10752, 8704, 14080, 12032,
     12800, 10752, 5888,  5888,  5632,  6400,  9472,  8960,  5376, 6400,  9472, 8704,  5120, 6912}};
constexpr std::uint16_t kNonzero9[][16] = {
    {11776},
    {10496, 10752, 9984},
    {11520, 9472, 9216, 9472, 9216, 9472, 8960},
    {10240, 9472, 8960, 8960, 8704, 8704, 8704, 8704, 8704, 8704, 8704, 8448, 8192, 8704, 8448, 8192}};

// Table 4.A.65: magnitude bits, table 10.
constexpr std::uint16_t kZero10[][65] = {
    {15104, 15360, 13312, 15360, 12800, 14592, 11776, 15616, 13312, 14592, 12032, 15360, 11520, 14080, 11520},
    {13568, 14336, 11264, 14592, 11264, 13312, 11008, 14336, 11776, 13312, 11520, 13824, 10752,
     13056, 10240, 12544, 12544, 9728,  10496, 8192,  8960,  7936,  11520, 9728,  8192,  9728,
     8960,  9472,  8448,  11264, 9216,  7424,  9472,  9216,  9216,  12288, 10240, 12288, 10496,
     8704,  7680,  7168,  9472,  7424,  8960,  8960,  9472,  13056, 11264, 14080, 11008, 13312,
     11264, 7680,  7168,  8448,  6912,  10496, 10752, 7424,  9728,  12800, 10752, 8192,  9216},
    {10496, 11776, 9728, 12032, 9728, 11520, 9728, 11776, 9472, 11008, 9728, 12032, 8960, 10752, 8960, 10240, 10240,
     8448,  9216,  8192, 8192,  6912, 9216,  7936, 7168,  8448, 8704,  7424, 7168,  7936, 7168,  6400, 7680,  8448,
     8448,  10496, 8704, 8960,  8448, 7168,  6656, 6656,  8448, 8448,  7168, 7168,  7936, 9984,  9472, 11520, 9984,
     10752, 8960,  7168, 7424,  6656, 6656,  6912, 7424,  6144, 8192,  8960, 7936,  6400, 7168},
    {7168, 7680, 6912, 7680, 7168, 7680, 6400, 6656, 7936, 7936, 6400, 8192, 6656, 7936, 5888, 6912, 6656,
     6400, 6144, 6400, 6144, 5632, 6400, 6656, 6400, 5888, 6144, 5888, 6144, 5632, 5888, 5120, 5632, 6144,
     6656, 7168, 7168, 7168, 5888, 5888, 5376, 5376, 5632, 5632, 5376, 5120, 5888, 6912, 6656, 8960, 7168,
     7424, 6656, 5632, 5632, 5376, 5120, 6144, 5376, 4864, 5888, 6400, 5632, 5120, 5120}};
constexpr std::uint16_t kNonzero10[][16] = {
    {12544},
    {11008, 10752, 10496},
    {9984, 9728, 9472, 9472, 9472, 8704, 8704},
    {8704, 8960, 8960, 8960, 8704, 8960, 8704, 8960, 8704, 8704, 8704, 8704, 8704, 8192, 8448, 8704}};

// Fails to compile for a number that is not of this scale.
consteval std::uint8_t InPlaneScale(unsigned p0) {
    constexpr unsigned kStep = kProbabilityScale / kPlaneScale;
    if (p0 % kStep != 0 || p0 >= kProbabilityScale)
        throw "not in 64ths";
    return static_cast<std::uint8_t>(p0 / kStep);
}

// A row for each plane from what the standard has as separate tables, which end with a row for all further planes.
// Entries that cannot occur get even chances.
template <std::size_t kPlanes, std::size_t kZeroRows, std::size_t kNonzeroRows = 0>
consteval std::array<PlaneRow, kPlanes> MakeRows(const std::uint16_t (&zero)[kZeroRows][65],
                                                 const std::uint16_t (*nonzero)[16] = nullptr) {
    constexpr std::size_t kEntries[] = {1, 3, 7, 16}; // of the nonzero rows, which begin at d = 1
    std::array<PlaneRow, kPlanes> rows{};
    for (std::size_t d = 0; d < rows.size(); ++d) {
        rows[d].p0.fill(kPlaneScale / 2);
        const std::size_t zeroRow = d < kZeroRows ? d : kZeroRows - 1;
        for (std::size_t c = 0; c < kContexts; ++c) {
            if (zero[zeroRow][c] != 0)
                rows[d].p0[c] = InPlaneScale(zero[zeroRow][c]);
        }
        const std::size_t nonzeroRow = d < kNonzeroRows ? d : kNonzeroRows;
        for (std::size_t h = 0; nonzeroRow >= 1 && h < kEntries[nonzeroRow - 1]; ++h)
            rows[d].p0[kContexts + h] = InPlaneScale(nonzero[nonzeroRow - 1][h]);
        rows[d].zeros = 1;
        for (const std::uint8_t context : kContextPosition) // of lines that are 0, a context is where the tree has it
            rows[d].zeros *= rows[d].p0[context];
    }
    return rows;
}

constexpr auto kRows1 = MakeRows<1>(kZero1);
constexpr auto kRows2 = MakeRows<1>(kZero2);
constexpr auto kRows3 = MakeRows<2, 2, 1>(kZero3, kNonzero3);
constexpr auto kRows4 = MakeRows<2, 2, 1>(kZero4, kNonzero4);
constexpr auto kRows5 = MakeRows<3, 3, 2>(kZero5, kNonzero5);
constexpr auto kRows6 = MakeRows<3, 3, 2>(kZero6, kNonzero6);
constexpr auto kRows7 = MakeRows<4, 4, 3>(kZero7, kNonzero7);
constexpr auto kRows8 = MakeRows<4, 4, 3>(kZero8, kNonzero8);
constexpr auto kRows9 = MakeRows<kLargestPlane, 4, 4>(kZero9, kNonzero9);
constexpr auto kRows10 = MakeRows<7, 4, 4>(kZero10, kNonzero10);

// Table 4.A.31, types 0..31.
constexpr std::array<CbandSiType, 32> kTypes = {
    {{6, 6, 4, 0},    {5, 6, 6, 1},   {6, 8, 4, 0},    {5, 8, 6, 1},    {6, 8, 8, 2},    {6, 10, 4, 0},
     {5, 10, 6, 1},   {6, 10, 8, 2},  {5, 10, 10, 3},  {6, 12, 4, 0},   {5, 12, 6, 1},   {6, 12, 8, 2},
     {8, 12, 12, 4},  {6, 14, 4, 0},  {5, 14, 6, 1},   {6, 14, 8, 2},   {8, 14, 12, 4},  {9, 14, 14, 5},
     {6, 15, 4, 0},   {5, 15, 6, 1},  {6, 15, 8, 2},   {8, 15, 12, 4},  {10, 15, 15, 6}, {8, 16, 12, 4},
     {10, 16, 16, 6}, {9, 17, 14, 5}, {10, 17, 17, 6}, {10, 18, 18, 6}, {12, 19, 19, 6}, {12, 20, 20, 6},
     {12, 21, 21, 6}, {12, 22, 22, 6}}};

// 48000 and 44100 Hz, long window.
constexpr std::uint16_t kLong48000[] = {0,   4,   8,   12,  16,  20,  24,  28,  32,  36,  40,  48,  56,
                                        64,  72,  80,  88,  96,  108, 120, 132, 144, 160, 176, 196, 216,
                                        240, 264, 292, 320, 352, 384, 416, 448, 480, 512, 544, 576, 608,
                                        640, 672, 704, 736, 768, 800, 832, 864, 896, 928, 1024};

// 32000 Hz, long window.
constexpr std::uint16_t kLong32000[] = {0,   4,   8,   12,  16,  20,  24,  28,  32,  36,  40,  48,  56,
                                        64,  72,  80,  88,  96,  108, 120, 132, 144, 160, 176, 196, 216,
                                        240, 264, 292, 320, 352, 384, 416, 448, 480, 512, 544, 576, 608,
                                        640, 672, 704, 736, 768, 800, 832, 864, 896, 928, 960, 992, 1024};

// 24000 and 22050 Hz, long window.
constexpr std::uint16_t kLong24000[] = {0,   4,   8,   12,  16,  20,  24,  28,  32,  36,  40,  44,
                                        52,  60,  68,  76,  84,  92,  100, 108, 116, 124, 136, 148,
                                        160, 172, 188, 204, 220, 240, 260, 284, 308, 336, 364, 396,
                                        432, 468, 508, 552, 600, 652, 704, 768, 832, 896, 960, 1024};

// 16000 and 12000 and 11025 Hz, long window.
constexpr std::uint16_t kLong16000[] = {0,   8,   16,  24,  32,  40,  48,  56,  64,  72,  80,  88,  100, 112, 124,
                                        136, 148, 160, 172, 184, 196, 212, 228, 244, 260, 280, 300, 320, 344, 368,
                                        396, 424, 456, 492, 532, 572, 616, 664, 716, 772, 832, 896, 960, 1024};

// 8000 Hz, long window.
constexpr std::uint16_t kLong8000[] = {0,   12,  24,  36,  48,  60,  72,  84,  96,  108, 120, 132, 144, 156,
                                       172, 188, 204, 220, 236, 252, 268, 288, 308, 328, 348, 372, 396, 420,
                                       448, 476, 508, 544, 580, 620, 664, 712, 764, 820, 880, 944, 1024};

// 48000 and 44100 and 32000 Hz, short window.
constexpr std::uint16_t kShort48000[] = {0, 4, 8, 12, 16, 20, 28, 36, 44, 56, 68, 80, 96, 112, 128};

// 24000 and 22050 Hz, short window.
constexpr std::uint16_t kShort24000[] = {0, 4, 8, 12, 16, 20, 24, 28, 36, 44, 52, 64, 76, 92, 108, 128};

// 16000 and 12000 and 11025 Hz, short window.
constexpr std::uint16_t kShort16000[] = {0, 4, 8, 12, 16, 20, 24, 28, 32, 40, 48, 60, 72, 88, 108, 128};

// 8000 Hz, short window.
constexpr std::uint16_t kShort8000[] = {0, 4, 8, 12, 16, 20, 24, 28, 36, 44, 52, 60, 72, 88, 108, 128};

// One row a rate: scalefactor bands, bands that TNS may filter, enhancement step (4.5.2.6.2.5).
constexpr RateTables kRates[] = {
    {48000, kLong48000, kShort48000, 40, 14, 8},  {44100, kLong48000, kShort48000, 42, 14, 8},
    {32000, kLong32000, kShort48000, 51, 14, 16}, {24000, kLong24000, kShort24000, 46, 14, 16},
    {22050, kLong24000, kShort24000, 46, 14, 16}, {16000, kLong16000, kShort16000, 42, 14, 32},
    {12000, kLong16000, kShort16000, 42, 14, 32}, {11025, kLong16000, kShort16000, 42, 14, 32},
    {8000, kLong8000, kShort8000, 39, 14, 64}};

// samplingFrequencyIndex 3 is 48000 Hz, 11 is 8000 Hz; the layers of the higher rates are not defined.
constexpr unsigned kFirstIndex = 3;

constexpr std::uint8_t no = kNoContext; // keeps the rows of the context table short

} // namespace

const std::array<CbandSiType, 32> kCbandSiTypes = kTypes;
const std::array<CumulativeModel, 7> kCbandSiModels = {kCbandSi0, kCbandSi1, kCbandSi2, kCbandSi3,
                                                       kCbandSi4, kCbandSi5, kCbandSi6};
const CumulativeModel kCbandSiBand0Model = kCbandSiBand0;
const std::array<CumulativeModel, 8> kScalefactorModels = {CumulativeModel(), kScalefactor1, kScalefactor2,
                                                           kScalefactor3,     kScalefactor4, kScalefactor5,
                                                           kScalefactor6,     kScalefactor7};
const CumulativeModel kMsUsedModel = kMsUsed;
const CumulativeModel kStereoInfoModel = kStereoInfo;
const CumulativeModel kNoiseFlagModel = kNoiseFlag;
const CumulativeModel kNoiseModeModel = kNoiseMode;
const CumulativeModel kNoiseEnergyModel = kNoiseEnergy;

// Table 4.A.33.
const std::array<PlaneModel, kLargestCbandSi + 1> kPlaneModels = {
    {{0, nullptr},        {1, kRows1.data()},  {1, kRows2.data()},  {2, kRows3.data()},  {2, kRows4.data()},
     {3, kRows5.data()},  {3, kRows6.data()},  {4, kRows7.data()},  {4, kRows8.data()},  {5, kRows9.data()},
     {5, kRows10.data()}, {6, kRows9.data()},  {6, kRows10.data()}, {7, kRows9.data()},  {7, kRows10.data()},
     {8, kRows9.data()},  {9, kRows9.data()},  {10, kRows9.data()}, {11, kRows9.data()}, {12, kRows9.data()},
     {13, kRows9.data()}, {14, kRows9.data()}, {15, kRows9.data()}}};

// Table 4.A.34, a row for each v.
const std::array<ContextTree, 16> kSpectralContext = {{{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14},
                                                       {15, 16, 17, 18, 19, 20, 21, no, no, no, no, no, no, no, no},
                                                       {22, 23, 24, no, no, no, no, 25, 25, 26, 26, 27, 27, 28, 28},
                                                       {29, 30, 31, no, no, no, no, no, no, no, no, no, no, no, no},
                                                       {32, no, no, 33, 33, 34, 34, 35, 36, 35, 36, 37, 38, 37, 38},
                                                       {39, no, no, 40, 40, 41, 41, no, no, no, no, no, no, no, no},
                                                       {42, no, no, no, no, no, no, 43, 43, 43, 43, 44, 44, 44, 44},
                                                       {45, no, no, no, no, no, no, no, no, no, no, no, no, no, no},
                                                       {no, 46, 46, 47, 48, 47, 48, 49, 50, 51, 52, 49, 50, 51, 52},
                                                       {no, 53, 53, 54, 55, 54, 55, no, no, no, no, no, no, no, no},
                                                       {no, 56, 56, no, no, no, no, 57, 57, 58, 58, 57, 57, 58, 58},
                                                       {no, 59, 59, no, no, no, no, no, no, no, no, no, no, no, no},
                                                       {no, no, no, 60, 60, 60, 60, 61, 62, 61, 62, 61, 62, 61, 62},
                                                       {no, no, no, 63, 63, 63, 63, no, no, no, no, no, no, no, no},
                                                       {no, no, no, no, no, no, no, 64, 64, 64, 64, 64, 64, 64, 64},
                                                       {no, no, no, no, no, no, no, no, no, no, no, no, no, no, no}}};

const RateTables* FindRateByIndex(unsigned samplingFrequencyIndex) {
    if (samplingFrequencyIndex < kFirstIndex || samplingFrequencyIndex - kFirstIndex >= std::size(kRates))
        return nullptr;
    return &kRates[samplingFrequencyIndex - kFirstIndex];
}

const RateTables* FindRate(unsigned rate) {
    for (const RateTables& tables : kRates) {
        if (tables.rate == rate)
            return &tables;
    }
    return nullptr;
}

unsigned SamplingFrequencyIndex(unsigned rate) {
    return kFirstIndex + static_cast<unsigned>(FindRate(rate) - kRates);
}

} // namespace codec
