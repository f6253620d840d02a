#include "Platforms/Linux/ImageFiles.h"
#include "Platforms/Linux/OpenCvImaging.h"
#include "Platforms/Linux/PixelBuffer.h"
#include "Tests/Fakes/SharedFolder.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Pixel = std::array<int, 4>;

Pixel pixel(const Bitmap& image, int x, int y) {
    const auto* p = &image.bytes()[static_cast<std::size_t>(y) * image.bytesPerRow() +
                                   static_cast<std::size_t>(x) * 4];
    return {p[0], p[1], p[2], p[3]};
}

/// Blue 10 × column, green 10 × row, red 200, alpha 0; rows padded.
std::shared_ptr<const PixelBuffer> buffer(int width, int height) {
    const std::size_t stride = static_cast<std::size_t>(width) * 4 + 12;
    std::vector<std::uint8_t> bytes(stride * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            auto* p =
                &bytes[static_cast<std::size_t>(y) * stride + static_cast<std::size_t>(x) * 4];
            p[0] = static_cast<std::uint8_t>(10 * x);
            p[1] = static_cast<std::uint8_t>(10 * y);
            p[2] = 200;
        }
    }
    return PixelBuffer::create(width, height, stride, std::move(bytes));
}

class OtherSource final : public SourceImage {
  public:
    [[nodiscard]] Size extent() const override { return {8, 8}; }
};

TEST(PixelBuffer, RefusesBytesThatDoNotCoverIt) {
    EXPECT_TRUE(PixelBuffer::create(2, 2, 12, std::vector<std::uint8_t>(20)));
    EXPECT_FALSE(PixelBuffer::create(2, 2, 12, std::vector<std::uint8_t>(19)));
    EXPECT_FALSE(PixelBuffer::create(2, 2, 7, std::vector<std::uint8_t>(99)));
    EXPECT_FALSE(PixelBuffer::create(0, 2, 8, std::vector<std::uint8_t>(99)));
    EXPECT_FALSE(PixelBuffer::create(1, std::numeric_limits<int>::max(),
                                     std::numeric_limits<std::size_t>::max(),
                                     std::vector<std::uint8_t>(99)));
}

TEST(OpenCvImaging, RendersAPartCountedFromTheBottom) {
    const auto source = buffer(20, 10);
    const auto part = OpenCvImaging().render(*source, {3, 1, 5, 2}, 1);
    ASSERT_TRUE(part);
    EXPECT_EQ(part->format(), rgba8);
    ASSERT_EQ(part->width(), 5);
    ASSERT_EQ(part->height(), 2);
    // Rows 7 and 8 from the top.
    EXPECT_EQ(pixel(*part, 0, 0), (Pixel{200, 70, 30, 255}));
    EXPECT_EQ(pixel(*part, 4, 1), (Pixel{200, 80, 70, 255}));
}

TEST(OpenCvImaging, ShrinksByArea) {
    const auto source = buffer(20, 10);
    const auto half = OpenCvImaging().render(*source, {0, 0, 20, 10}, 0.5);
    ASSERT_TRUE(half);
    ASSERT_EQ(half->width(), 10);
    ASSERT_EQ(half->height(), 5);
    const Pixel p = pixel(*half, 3, 2);
    EXPECT_NEAR(p[2], 65, 1) << "columns 6 and 7";
    EXPECT_NEAR(p[1], 45, 1) << "rows 4 and 5";
    // Whatever is left of a pixel is one.
    EXPECT_EQ(OpenCvImaging().render(*source, {0, 0, 20, 10}, 0.001)->width(), 1);
}

TEST(OpenCvImaging, RefusesWhatCannotBeDrawn) {
    const OpenCvImaging imaging;
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const auto source = buffer(20, 10);
    EXPECT_FALSE(imaging.render(OtherSource(), {0, 0, 8, 8}, 1));
    EXPECT_FALSE(imaging.render(*source, {30, 0, 8, 8}, 1));
    EXPECT_FALSE(imaging.render(*source, {nan, 0, 8, 8}, 1));
    for (const double scale : {0.0, -1.0, nan, 1e9}) {
        EXPECT_FALSE(imaging.render(*source, {0, 0, 8, 8}, scale)) << scale;
    }
    const Bitmap image = *imaging.render(*source, {0, 0, 20, 10}, 1);
    EXPECT_FALSE(imaging.draw(image, 0, 4, {}));
    EXPECT_FALSE(imaging.draw(image, 1 << 30, 4, {}));
    EXPECT_FALSE(imaging.draw(image, 4, 4, {.a = nan}));
    PixelFormat sixteen = rgba8;
    sixteen.bitsPerComponent = 16;
    sixteen.bitsPerPixel = 64;
    const auto odd = Bitmap::create(2, 2, 16, sixteen, std::vector<std::uint8_t>(32));
    EXPECT_FALSE(imaging.convert(image, sixteen));
    ASSERT_TRUE(odd);
    EXPECT_FALSE(imaging.draw(*odd, 4, 4, {}));
}

TEST(OpenCvImaging, DrawsThroughATransformFromTheBottomLeft) {
    const OpenCvImaging imaging;
    const Bitmap image = *imaging.render(*buffer(20, 10), {0, 0, 20, 10}, 1);
    // Shifted by whole pixels: two to the right, three up.
    const auto shifted = imaging.draw(image, 20, 10, {.tx = 2, .ty = 3});
    ASSERT_TRUE(shifted);
    EXPECT_EQ(shifted->format(), rgbx8);
    EXPECT_EQ(pixel(*shifted, 5, 2), (Pixel{200, 50, 30, 255}));
    EXPECT_EQ(pixel(*shifted, 1, 2), (Pixel{0, 0, 0, 255})) << "black where nothing is";
    EXPECT_EQ(pixel(*shifted, 5, 8), (Pixel{0, 0, 0, 255}));

    // A quarter turn to the left about the origin, moved back into view: (x, y) to (10 - y, x).
    const auto turned = imaging.draw(image, 10, 20, {.a = 0, .b = 1, .c = -1, .d = 0, .tx = 10});
    const Pixel p = pixel(*turned, 2, 3);
    // From the bottom-left the pixel's middle is (2.5, 16.5), so it shows (16.5, 7.5).
    EXPECT_EQ(p, (Pixel{200, 20, 160, 255}));

    const auto nothing = imaging.draw(image, 4, 4, {.a = 0, .d = 0});
    EXPECT_EQ(pixel(*nothing, 2, 2), (Pixel{0, 0, 0, 255})) << "a picture without extent";
}

TEST(OpenCvImaging, DrawsSmallWithoutSkippingPixels) {
    // One-pixel stripes shrunk to a quarter are even grey.
    std::vector<std::uint8_t> bytes(std::size_t{64} * 64 * 4);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = (i / 4) % 2 == 0 ? 0 : 200;
    const Bitmap stripes = *Bitmap::create(64, 64, std::size_t{64} * 4, rgbx8, std::move(bytes));
    const auto small = OpenCvImaging().draw(stripes, 16, 16, {.a = 0.25, .d = 0.25});
    ASSERT_TRUE(small);
    for (int x = 2; x < 14; ++x)
        EXPECT_NEAR(pixel(*small, x, 8)[0], 100, 2);
}

TEST(OpenCvImaging, ConvertsByteOrders) {
    using Alpha = PixelFormat::Alpha;
    using Order = PixelFormat::ByteOrder;
    const OpenCvImaging imaging;
    struct Case {
        PixelFormat format;
        std::vector<std::uint8_t> bytes;
        Pixel bgrx;
    };
    const std::vector<Case> cases{
        {rgbx8, {1, 2, 3, 9}, {3, 2, 1, 255}},
        {rgba8, {1, 2, 3, 9}, {3, 2, 1, 255}},
        {bgrx8, {1, 2, 3, 9}, {1, 2, 3, 255}},
        {{.alpha = Alpha::skipFirst, .byteOrder = Order::big32}, {9, 1, 2, 3}, {3, 2, 1, 255}},
        {{.alpha = Alpha::skipLast, .byteOrder = Order::little32}, {9, 1, 2, 3}, {1, 2, 3, 255}},
        {{.alpha = Alpha::last}, {200, 100, 50, 51}, {10, 20, 40, 255}},
        {{.bitsPerPixel = 24, .alpha = Alpha::none}, {1, 2, 3}, {3, 2, 1, 255}},
        {{.bitsPerPixel = 8, .alpha = Alpha::none, .colorModel = PixelFormat::ColorModel::gray},
         {7},
         {7, 7, 7, 255}},
    };
    for (const Case& c : cases) {
        const auto image = Bitmap::create(1, 1, c.bytes.size(), c.format, c.bytes);
        ASSERT_TRUE(image);
        const auto converted = imaging.convert(*image, bgrx8);
        ASSERT_TRUE(converted);
        EXPECT_EQ(converted->format(), bgrx8);
        EXPECT_EQ(pixel(*converted, 0, 0), c.bgrx);
        const auto back = imaging.convert(*converted, rgba8);
        EXPECT_EQ(pixel(*back, 0, 0), (Pixel{c.bgrx[2], c.bgrx[1], c.bgrx[0], 255}));
    }
}

TEST(ImageFiles, NamesAFileThatIsNoPicture) {
    const auto missing = readPicture("nowhere/0001.jpg");
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error(), "The picture “0001.jpg” isn’t there.");

    const auto text = readPicture(std::filesystem::path(MARROWBY_SOURCE_DIR) / "CMakeLists.txt");
    ASSERT_FALSE(text);
    EXPECT_EQ(text.error(), "The picture “CMakeLists.txt” couldn’t be read: it is no picture.");
}

TEST(ImageFiles, ReadsAPictureAndSurvivesADamagedOne) {
    const auto shared = sharedFolder();
    if (!shared) GTEST_SKIP() << noSharedFolder;
    const auto file = *shared / "media" / "owner-look" / "0000.jpg";
    const auto picture = readPicture(file);
    ASSERT_TRUE(picture);
    EXPECT_EQ((*picture)->extent(), (Size{480, 360}));

    std::ifstream stream(file, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    for (std::size_t i = 20; i < bytes.size(); i += 7)
        bytes[i] = static_cast<char>(i);
    const auto damaged = std::filesystem::path(testing::TempDir()) / "marrowby-damaged.jpg";
    std::ofstream(damaged, std::ios::binary) << bytes;
    EXPECT_FALSE(readPicture(damaged));
    std::filesystem::remove(damaged);
}

}  // namespace
}  // namespace marrowby
