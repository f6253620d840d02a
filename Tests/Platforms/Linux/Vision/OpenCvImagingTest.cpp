// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Camera/PixelBuffer.h"
#include "Platforms/Linux/Pictures/ImageFiles.h"
#include "Platforms/Linux/Vision/OpenCvFourierTransform.h"
#include "Platforms/Linux/Vision/OpenCvImaging.h"
#include "Tests/Fakes/SharedFolder.h"
#include "Tests/Platforms/FourierContract.h"
#include "Tests/Platforms/ImagingContract.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

struct OpenCvBackend {
    static constexpr double tolerance = 0;
    static std::unique_ptr<Imaging> makeImaging() { return std::make_unique<OpenCvImaging>(); }
    /// With padding after each row.
    static std::shared_ptr<const SourceImage> makeSource(int width, int height,
                                                         std::vector<std::uint8_t> bytes) {
        const std::ptrdiff_t row = std::ptrdiff_t{width} * 4;
        for (std::ptrdiff_t y = height; y > 0; --y)
            bytes.insert(bytes.begin() + y * row, 12, std::uint8_t{77});
        return PixelBuffer::create(width, height, static_cast<std::size_t>(row) + 12,
                                   std::move(bytes));
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(OpenCv, ImagingContract, OpenCvBackend);

TEST(OpenCvFourierTransform, agreesWithTheDefinition) {
    expectTheDefinition(OpenCvFourierTransform());
}

TEST(PixelBuffer, RefusesBytesThatDoNotCoverIt) {
    EXPECT_TRUE(PixelBuffer::create(2, 2, 12, std::vector<std::uint8_t>(20)));
    EXPECT_FALSE(PixelBuffer::create(2, 2, 12, std::vector<std::uint8_t>(19)));
    EXPECT_FALSE(PixelBuffer::create(2, 2, 7, std::vector<std::uint8_t>(99)));
    EXPECT_FALSE(PixelBuffer::create(0, 2, 8, std::vector<std::uint8_t>(99)));
    EXPECT_FALSE(PixelBuffer::create(1, std::numeric_limits<int>::max(),
                                     std::numeric_limits<std::size_t>::max(),
                                     std::vector<std::uint8_t>(99)));
}

TEST(ImageFiles, ReadsAPictureAndSurvivesADamagedOne) {
    EXPECT_EQ(readPicture("nowhere/0001.jpg").error(), "The picture “0001.jpg” isn’t there.");
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
