#include "jpeg/RowConverter.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

namespace jpeg {
namespace {

TEST(ColourTables, ChromaIsCentredOn127) {
    YccToRgbTables tables;
    tables.Fill();
    EXPECT_EQ(tables.crToR[127], 0);
    EXPECT_EQ(tables.crToR[128], 1); // (91881 + 32768) >> 16
    EXPECT_EQ(tables.crToR[0], (91881 * -127 + 32768) >> 16);
    EXPECT_EQ(tables.cbToB[255], (116130 * 128 + 32768) >> 16);
    EXPECT_EQ(tables.crToG[255], -46802 * 128);
    EXPECT_EQ(tables.cbToG[127], 32768);
}

TEST(ColourTables, LiteralPixels) {
    YccToRgbTables tables;
    tables.Fill();
    const Rgb grey = YccToRgb(tables, 100, 127, 127);
    EXPECT_EQ(grey.r, 100);
    EXPECT_EQ(grey.g, 100);
    EXPECT_EQ(grey.b, 100);
    const Rgb usual = YccToRgb(tables, 100, 128, 128); // one step off, on purpose
    EXPECT_EQ(usual.r, 101);
    EXPECT_EQ(usual.g, 99);
    EXPECT_EQ(usual.b, 102);
    EXPECT_EQ(YccToRgb(tables, 255, 128, 255).r, 255);
    EXPECT_EQ(YccToRgb(tables, 0, 0, 128).b, 0);
}

TEST(ColourTables, Packing) {
    EXPECT_EQ(PackRgb565({255, 0, 0}), 0xF800);
    EXPECT_EQ(PackRgb565({0, 255, 0}), 0x07E0);
    EXPECT_EQ(PackRgb565({0, 0, 255}), 0x001F);
    EXPECT_EQ(PackRgb565({7, 3, 7}), 0);
    EXPECT_EQ(ContributionOf({255, 128, 7}), 0x003F2001u);
    EXPECT_EQ(PackFourContributions565(4 * ContributionOf({255, 255, 255})), 0xFFFF);
    EXPECT_EQ(PackFourContributions565(4 * ContributionOf({255, 0, 0})), 0xF800);
    EXPECT_EQ(PackFourContributions565(0x00080408), 0x0821);
}

// Every pair of chroma values with a spread of luma: what the vector path makes of a row is what the tables say.
TEST(RowConverter, RowsEqualTheTablesForEveryChroma) {
    YccToRgbTables tables;
    tables.Fill();
    RowConverter full;
    RowConverter half;
    ASSERT_EQ(full.Open(ColourModel::kYcc, 0), Status::kOk);
    ASSERT_EQ(half.Open(ColourModel::kYcc, 1), Status::kOk);
    constexpr int kWidth = 256 + 5; // a tail that fills no vector
    std::vector<std::uint8_t> y(kWidth + kRowSlack);
    std::vector<std::uint8_t> cb(kWidth + kRowSlack);
    std::vector<std::uint8_t> cr(kWidth + kRowSlack);
    std::vector<std::uint8_t> pixels(2 * kWidth);
    std::vector<std::uint32_t> words(kWidth + kRowSlack);
    std::vector<std::uint8_t> bytes(3 * kWidth);
    for (int c = 0; c < 256; ++c) {
        for (int x = 0; x < kWidth; ++x) {
            const auto at = static_cast<std::size_t>(x);
            y[at] = static_cast<std::uint8_t>(x * 37 + c * 11);
            cb[at] = static_cast<std::uint8_t>(x);
            cr[at] = static_cast<std::uint8_t>(c);
        }
        for (const bool isHalf : {false, true}) {
            const RowConverter& converter = isHalf ? half : full;
            const SampleRow row{y.data(), cb.data(), cr.data()};
            converter.ToRgb565(row, kWidth, pixels.data());
            converter.ToRgb24(row, kWidth, bytes.data());
            converter.StoreContributions(row, kWidth, words.data());
            converter.AddContributions(row, kWidth, words.data());
            for (int x = 0; x < kWidth; ++x) {
                const auto at = static_cast<std::size_t>(x);
                const auto chroma = static_cast<std::size_t>(isHalf ? x / 2 : x);
                const Rgb wanted = YccToRgb(tables, y[at], cb[chroma], cr[chroma]);
                std::uint16_t word;
                std::memcpy(&word, &pixels[2 * at], 2);
                ASSERT_EQ(word, PackRgb565(wanted)) << x << " " << c;
                ASSERT_EQ(words[at], 2 * ContributionOf(wanted));
                ASSERT_EQ(bytes[3 * at], wanted.r);
                ASSERT_EQ(bytes[3 * at + 1], wanted.g);
                ASSERT_EQ(bytes[3 * at + 2], wanted.b);
            }
        }
    }
}

// Of any width, also less than a vector: all pixels, and none behind the last.
TEST(RowConverter, EveryWidthEndsWhereItShould) {
    std::vector<std::uint8_t> samples(100 + kRowSlack);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<std::uint8_t>(i * 29);
    }
    const SampleRow row{samples.data(), samples.data() + 1, samples.data() + 2};
    for (const ColourModel model : {ColourModel::kYcc, ColourModel::kGrey, ColourModel::kRgb}) {
        for (const int shift : {0, 1}) {
            if (shift == 1 && model != ColourModel::kYcc) {
                continue;
            }
            RowConverter converter;
            ASSERT_EQ(converter.Open(model, shift), Status::kOk);
            for (int width = 1; width <= 70; ++width) {
                std::vector<std::uint8_t> pixels(2 * 80, 0xEE);
                std::vector<std::uint8_t> bytes(3 * 80, 0xEE);
                converter.ToRgb565(row, width, pixels.data());
                converter.ToRgb24(row, width, bytes.data());
                for (int x = 0; x < 80; ++x) {
                    const auto at = static_cast<std::size_t>(x);
                    std::uint16_t word;
                    std::memcpy(&word, &pixels[2 * at], 2);
                    const Rgb exact{bytes[3 * at], bytes[3 * at + 1], bytes[3 * at + 2]};
                    ASSERT_EQ(word, x < width ? PackRgb565(exact) : 0xEEEE) << width << " " << x;
                }
            }
        }
    }
}

TEST(RowConverter, GreyAndRgbPassThrough) {
    std::mt19937 random(7);
    std::vector<std::uint8_t> a(50 + kRowSlack);
    std::vector<std::uint8_t> b(50 + kRowSlack);
    std::vector<std::uint8_t> c(50 + kRowSlack);
    for (auto* plane : {&a, &b, &c}) {
        for (auto& sample : *plane) {
            sample = static_cast<std::uint8_t>(random());
        }
    }
    for (const ColourModel model : {ColourModel::kGrey, ColourModel::kRgb}) {
        RowConverter converter;
        ASSERT_EQ(converter.Open(model, 0), Status::kOk);
        const SampleRow row{a.data(), b.data(), c.data()};
        std::vector<std::uint8_t> pixels(101); // an odd address is a fair destination
        std::vector<std::uint32_t> words(50 + kRowSlack);
        converter.ToRgb565(row, 50, pixels.data() + 1);
        converter.StoreContributions(row, 50, words.data());
        for (std::size_t x = 0; x < 50; ++x) {
            const Rgb wanted = model == ColourModel::kGrey ? Rgb{a[x], a[x], a[x]} : Rgb{a[x], b[x], c[x]};
            std::uint16_t word;
            std::memcpy(&word, &pixels[2 * x + 1], 2);
            ASSERT_EQ(word, PackRgb565(wanted));
            ASSERT_EQ(words[x], ContributionOf(wanted));
        }
    }
}

} // namespace
} // namespace jpeg
