// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/RectangleFinder.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr RectangleRequest request{.minimumConfidence = 0.6,
                                   .minimumSize = 0.15,
                                   .maximumObservations = 3,
                                   .minimumAspectRatio = 0.35,
                                   .maximumAspectRatio = 1.0,
                                   .quadratureToleranceDegrees = 30};

using Shape = std::vector<Point>;

/// Corners are in clockwise order.
bool isInside(const Shape& shape, double x, double y) {
    for (std::size_t i = 0; i < shape.size(); ++i) {
        const Point& a = shape[i];
        const Point& b = shape[(i + 1) % shape.size()];
        if ((b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x) < 0) return false;
    }
    return true;
}

struct Layer {
    Shape shape;
    std::uint8_t brightness;
};

/// Shapes before a wall, the farthest first.
Bitmap scene(const std::vector<Layer>& layers) {
    std::vector<std::uint8_t> bytes;
    for (int y = 0; y < 480; ++y) {
        for (int x = 0; x < 640; ++x) {
            std::uint8_t value = 160;
            for (const Layer& layer : layers) {
                if (isInside(layer.shape, x, y)) value = layer.brightness;
            }
            bytes.insert(bytes.end(), {value, value, value, 255});
        }
    }
    return *Bitmap::create(640, 480, std::size_t{640} * 4, rgba8, std::move(bytes));
}

Bitmap scene(const Shape& back) {
    return scene({{back, 40}});
}

Bitmap scene(const Shape& back, const Shape& front) {
    return scene({{back, 40}, {front, 90}});
}

Shape box(double left, double top, double right, double bottom) {
    return {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
}

Shape oval(Point centre, double width, double height) {
    Shape shape;
    for (int i = 0; i < 40; ++i) {
        shape.push_back(
            {centre.x + width * std::cos(i * 0.15708), centre.y + height * std::sin(i * 0.15708)});
    }
    return shape;
}

TEST(RectangleFinder, findsDevicesInPerspective) {
    struct Case {
        Shape shape;
        Rect box;
    };
    const Case cases[] = {
        {{{200, 80}, {400, 80}, {400, 420}, {200, 420}}, {200, 80, 200, 340}},
        {{{180, 120}, {420, 90}, {450, 400}, {160, 380}}, {160, 90, 290, 310}},
        {{{300, 40}, {500, 240}, {300, 440}, {100, 240}}, {100, 40, 400, 400}},
        {{{120, 160}, {520, 160}, {520, 320}, {120, 320}}, {120, 160, 400, 160}},
    };
    for (const auto& [shape, box] : cases) {
        const auto found = findRectangles(scene(shape), request);
        ASSERT_EQ(found->size(), 1U) << shape[0].x;
        EXPECT_NEAR(found->at(0).x, box.x, 8);
        EXPECT_NEAR(found->at(0).y, box.y, 8);
        EXPECT_NEAR(found->at(0).maxX(), box.maxX(), 8);
        EXPECT_NEAR(found->at(0).maxY(), box.maxY(), 8);
    }
    auto none = request;
    none.maximumObservations = 0;
    EXPECT_TRUE(findRectangles(scene(cases[0].shape), none)->empty());
}

TEST(RectangleFinder, findsHandHeldAndCutOffDevices) {
    const Shape whole{{200, 60}, {420, 60}, {420, 420}, {200, 420}};
    const Shape cut{{200, 100}, {440, 100}, {440, 500}, {200, 500}};
    const auto held = findRectangles(scene(whole, oval({420, 330}, 40, 60)), request);
    const auto near = findRectangles(scene(cut, oval({440, 300}, 40, 60)), request);
    ASSERT_FALSE(held->empty());
    ASSERT_FALSE(near->empty());
    EXPECT_NEAR(held->at(0).maxX(), 420, 8);
    EXPECT_NEAR(held->at(0).maxY(), 420, 8);
    EXPECT_NEAR(near->at(0).y, 100, 8);
    EXPECT_NEAR(near->at(0).maxY(), 480, 8);

    const Shape phone{{230, 60}, {410, 60}, {410, 500}, {230, 500}};
    const Shape sheet{{160, 60}, {480, 60}, {480, 500}, {160, 500}};
    EXPECT_EQ(findRectangles(scene(phone, oval({410, 480}, 30, 50)), request)->size(), 1U)
        << "a thumb at the picture's edge";
    EXPECT_TRUE(findRectangles(scene(sheet, oval({480, 480}, 30, 50)), request)->empty())
        << "could as well be an arm in front of a door";
}

TEST(RectangleFinder, ignoresOtherRectangles) {
    struct Case {
        const char* what;
        Shape shape;
    };
    const Case cases[] = {
        {"too small", {{300, 200}, {360, 200}, {360, 260}, {300, 260}}},
        {"too long", {{60, 200}, {580, 200}, {580, 300}, {60, 300}}},
        {"corners too sharp", {{290, 80}, {350, 80}, {560, 400}, {80, 400}}},
        {"a triangle", {{320, 80}, {500, 400}, {140, 400}}},
        {"a head", oval({320, 240}, 110, 150)},
    };
    for (const Case& c : cases)
        EXPECT_TRUE(findRectangles(scene(c.shape), request)->empty()) << c.what;
    const Shape window{{200, 60}, {440, 60}, {440, 400}, {200, 400}};
    EXPECT_TRUE(findRectangles(scene(window, oval({320, 470}, 200, 160)), request)->empty())
        << "a person in front of a window";
    const Shape door{{200, 60}, {440, 60}, {440, 500}, {200, 500}};
    EXPECT_TRUE(findRectangles(scene(door, oval({320, 540}, 200, 110)), request)->empty())
        << "shoulders that hide only the foot of a door";
    const Shape picture{{220, 60}, {420, 60}, {420, 300}, {220, 300}};
    const Shape body{{275, 140}, {365, 140}, {365, 480}, {275, 480}};
    EXPECT_TRUE(findRectangles(scene(picture, body), request)->empty())
        << "a person in front of a picture";
}

TEST(RectangleFinder, ignoresLinesOfSeveralThings) {
    struct Case {
        const char* what;
        std::vector<Layer> layers;
    };
    const Case cases[] = {
        {"a chin at the lower side of a picture",
         {{box(220, 60, 420, 300), 40},
          {box(285, 280, 355, 480), 130},
          {box(270, 120, 370, 300), 220}}},
        {"arms below the sides of a picture",
         {{box(200, 60, 440, 300), 40}, {box(200, 300, 440, 480), 220}}},
    };
    for (const Case& c : cases)
        EXPECT_TRUE(findRectangles(scene(c.layers), request)->empty()) << c.what;
}

TEST(RectangleFinder, prefersFullOutlines) {
    const Shape tablet{{220, 100}, {420, 100}, {420, 400}, {220, 400}};
    const Shape door{{120, 30}, {520, 30}, {520, 500}, {120, 500}};
    const auto found = findRectangles(scene(door, tablet), request);
    ASSERT_EQ(found->size(), 1U);
    EXPECT_NEAR(found->at(0).y, 100, 8);
}

}  // namespace
}  // namespace marrowby
