// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Island/Island.h"

#include "UnlockCore/Foundation/Phrase.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace marrowby {

namespace {

using panelshape::Arc;
using panelshape::Dot;
using panelshape::Polyline;
using panelshape::RoundedRectangle;
using panelshape::Text;

constexpr auto promptText = Phrase("Turn your head a little");

constexpr PanelColor pillColor{.red = 0.04, .green = 0.04, .blue = 0.05};
constexpr PanelColor white{.red = 1, .green = 1, .blue = 1};
constexpr PanelColor green{.red = 0.30, .green = 0.86, .blue = 0.45};
constexpr PanelColor red{.red = 1.0, .green = 0.42, .blue = 0.38};

// Points.
constexpr double panelWidth = 320;
constexpr double panelMargin = 20;
/// Distance of the pill from the top of a screen without a notch.
constexpr double gap = 8;
constexpr double pillHeight = 48;
constexpr Size closedSize{.width = 48, .height = 24};
constexpr double largestRadius = 24;
constexpr double inset = 10;
constexpr double ringRadius = 14;
constexpr double ringWidth = 2.5;
constexpr double fontSize = 14;
/// Estimated width of a character over the font size, slightly above that of common sans-serif
/// fonts.
constexpr double characterWidth = 0.58;
constexpr double shakeWidth = 6;

// Seconds.
constexpr double growing = 0.3;
constexpr double shrinking = 0.25;
/// Until a growing pill is wide enough to show its content.
constexpr double widening = 0.2;
/// Fade-in after that.
constexpr double appearing = 0.15;
constexpr double ticking = 0.35;
constexpr double shaking = 0.45;

constexpr double turnsPerSecond = 0.8;
constexpr double nodsPerSecond = 0.6;

template <typename Phase>
bool is(const OverlayPhase& phase) {
    return std::holds_alternative<Phase>(phase);
}

double part(double now, double begin, double end) {
    return std::clamp((now - begin) / (end - begin), 0.0, 1.0);
}

/// Ease-out.
double eased(double part) {
    return 1 - std::pow(1 - part, 3);
}

double between(double from, double to, double part) {
    return from + (to - from) * part;
}

PanelColor faded(PanelColor color, double alpha) {
    color.alpha *= alpha;
    return color;
}

std::string textOf(const OverlayPhase& phase) {
    if (const auto* failure = std::get_if<OverlayPhase::Failure>(&phase))
        return translated(title(failure->failure));
    return is<OverlayPhase::Prompt>(phase) ? translated(promptText) : std::string();
}

double widthOf(std::string_view text) {
    // Skips UTF-8 continuation bytes.
    const auto characters = std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; });
    return static_cast<double>(characters) * characterWidth * fontSize;
}

Size restingSize(const OverlayPhase& phase, const Size& notch) {
    if (is<OverlayPhase::Hidden>(phase) || is<OverlayPhase::Leaving>(phase)) return notch;
    const bool hasNotch = notch.height > 0;
    if (is<OverlayPhase::Closed>(phase)) return hasNotch ? notch : closedSize;
    double width = 2 * (inset + ringRadius);
    if (const auto text = textOf(phase); !text.empty()) width += widthOf(text) + 2 * inset;
    return {.width = std::max(hasNotch ? notch.width : 2 * pillHeight, width),
            .height = notch.height + pillHeight};
}

/// Draws the pill's content at the pill's current place.
class Painter {
  public:
    /// `now`: seconds since the content appeared.
    Painter(PanelDrawing& drawing, double now, double alpha)
        : drawing_(drawing), now_(now), alpha_(alpha) {}

    void padlock(const Point& centre, double scale, PanelColor color) {
        const PanelColor shown = faded(color, alpha_);
        drawing_.emplace_back(Arc{.centre = {.x = centre.x, .y = centre.y - scale},
                                  .radius = 3 * scale,
                                  .begin = 0.75,
                                  .length = 0.5,
                                  .width = 1.5 * scale,
                                  .color = shown});
        drawing_.emplace_back(RoundedRectangle{.frame = {.x = centre.x - 5 * scale,
                                                         .y = centre.y - scale,
                                                         .width = 10 * scale,
                                                         .height = 7 * scale},
                                               .radius = 1.5 * scale,
                                               .color = shown});
    }

    void ring(const Point& centre, PanelColor color) {
        arc(centre, ringRadius, 0, 1, faded(color, 0.3));
    }

    void face(const Point& centre, double turn) {
        const double x = centre.x + 4 * turn;
        for (const double side : {-4.0, 4.0}) {
            drawing_.emplace_back(Dot{.centre = {.x = x + side, .y = centre.y - 3},
                                      .radius = 1.7,
                                      .color = faded(white, alpha_)});
        }
        arc({.x = x, .y = centre.y}, 5.5, 0.36, 0.28, white);
    }

    void scanning(const Point& centre) {
        ring(centre, white);
        const double turned = now_ * turnsPerSecond;
        const double begin = turned - std::floor(turned);
        arc(centre, ringRadius, begin, 0.25, white);
        face(centre, 0);
    }

    void prompt(const Point& centre) {
        const double angle = 2 * std::numbers::pi * now_ * nodsPerSecond;
        ring(centre, white);
        arc(centre, ringRadius, 0.25 - 0.125 + (std::sin(angle) < 0 ? 0.5 : 0), 0.25, white);
        face(centre, std::sin(angle));
    }

    void success(const Point& centre) {
        arc(centre, ringRadius, 0, 1, green);
        const Point left{.x = centre.x - 6, .y = centre.y + 0.5};
        const Point low{.x = centre.x - 1.5, .y = centre.y + 5};
        const Point right{.x = centre.x + 6.5, .y = centre.y - 4.5};
        // The short stroke is a third of the check mark's length.
        const double drawn = 3 * eased(part(now_, 0, ticking));
        Polyline tick{
            .points = {left, towards(left, low, drawn)}, .width = 3, .color = faded(green, alpha_)};
        if (drawn > 1) tick.points.push_back(towards(low, right, (drawn - 1) / 2));
        drawing_.emplace_back(std::move(tick));
    }

    void cross(const Point& centre) {
        constexpr double arm = 4.5;
        line({{centre.x - arm, centre.y - arm}, {centre.x + arm, centre.y + arm}});
        line({{centre.x - arm, centre.y + arm}, {centre.x + arm, centre.y - arm}});
    }

    void exclamation(const Point& centre) {
        line({{centre.x, centre.y - 7}, {centre.x, centre.y + 1.5}});
        drawing_.emplace_back(Dot{.centre = {.x = centre.x, .y = centre.y + 6.5},
                                  .radius = 1.8,
                                  .color = faded(red, alpha_)});
    }

    void text(std::string_view text, const Rect& frame) {
        drawing_.emplace_back(Text{.text = std::string(text),
                                   .frame = frame,
                                   .size = fontSize,
                                   .color = faded(white, alpha_)});
    }

  private:
    static Point towards(const Point& from, const Point& to, double way) {
        const double part = std::min(way, 1.0);
        return {.x = between(from.x, to.x, part), .y = between(from.y, to.y, part)};
    }
    void arc(const Point& centre, double radius, double begin, double length, PanelColor color) {
        drawing_.emplace_back(Arc{.centre = centre,
                                  .radius = radius,
                                  .begin = begin,
                                  .length = length,
                                  .width = ringWidth,
                                  .color = faded(color, alpha_)});
    }
    void line(std::vector<Point> points) {
        drawing_.emplace_back(
            Polyline{.points = std::move(points), .width = 3, .color = faded(red, alpha_)});
    }

    PanelDrawing& drawing_;
    double now_;
    double alpha_;
};

/// The icon in a failure's ring. A spoof looks like an unknown face.
struct FailureIcon {
    Painter& painter;
    Point centre;

    void operator()(const UnlockFailure::CameraUnavailable&) { painter.exclamation(centre); }
    void operator()(const UnlockFailure::TypingFailed&) { painter.exclamation(centre); }
    void operator()(const UnlockFailure::NotRecognised&) { painter.cross(centre); }
    void operator()(const UnlockFailure::NotLive&) { painter.cross(centre); }
    void operator()(const UnlockFailure::PasswordRejected&) { painter.padlock(centre, 1.2, red); }
    void operator()(const UnlockFailure::NeedsAccessibility&) { painter.exclamation(centre); }
    void operator()(const UnlockFailure::NotOpened&) { painter.padlock(centre, 1.2, red); }
    void operator()(const UnlockFailure::FaceCutOff&) { painter.exclamation(centre); }
};

struct Content {
    Painter& painter;
    Point icon;
    bool hasNotch;

    void operator()(const OverlayPhase::Failure& phase) {
        painter.ring(icon, red);
        std::visit(FailureIcon{.painter = painter, .centre = icon}, phase.failure);
    }
    void operator()(const OverlayPhase::Hidden&) {}
    void operator()(const OverlayPhase::Closed&) {
        // It would be behind the notch.
        if (!hasNotch) painter.padlock({icon.x, icon.y - 1}, 0.9, faded(white, 0.7));
    }
    void operator()(const OverlayPhase::Scanning&) { painter.scanning(icon); }
    void operator()(const OverlayPhase::Prompt&) { painter.prompt(icon); }
    void operator()(const OverlayPhase::Success&) { painter.success(icon); }
    void operator()(const OverlayPhase::Leaving&) {}
};

struct Motion {
    double now;

    bool operator()(const OverlayPhase::Failure&) { return now < shaking; }
    bool operator()(const OverlayPhase::Hidden&) { return false; }
    bool operator()(const OverlayPhase::Closed&) { return now < widening + appearing; }
    bool operator()(const OverlayPhase::Scanning&) { return true; }
    bool operator()(const OverlayPhase::Prompt&) { return true; }
    bool operator()(const OverlayPhase::Success&) { return now < widening + ticking; }
    bool operator()(const OverlayPhase::Leaving&) { return now < shrinking; }
};

double widthOfPanel(const Size& notch) {
    return std::max(panelWidth, notch.width + 2 * panelMargin);
}

/// In the panel's coordinates.
Rect pillFrame(const Size& size, const Size& notch) {
    return {.x = (widthOfPanel(notch) - size.width) / 2,
            .y = notch.height > 0 ? 0 : gap,
            .width = size.width,
            .height = size.height};
}

}  // namespace

Rect Island::frame(const ScreenGeometry& screen) {
    const double width = widthOfPanel(screen.notch);
    return {.x = std::round(screen.frame.centre().x - width / 2),
            .y = screen.frame.y,
            .width = width,
            .height = screen.notch.height + gap + pillHeight + panelMargin};
}

Size Island::size() const {
    const Size end = restingSize(phase, notch);
    if (is<OverlayPhase::Hidden>(phase)) return end;
    const double length = is<OverlayPhase::Leaving>(phase) ? shrinking : growing;
    const double way = eased(part(since.count(), 0, length));
    return {.width = between(begin.width, end.width, way),
            .height = between(begin.height, end.height, way)};
}

Rect Island::hoverArea() const {
    // Extended to the screen's edge, where a pointer that is flung upwards stops.
    const Rect pill = pillFrame(restingSize(phase, notch), notch);
    return {.x = pill.x, .y = 0, .width = pill.width, .height = pill.maxY()};
}

PanelDrawing Island::drawing() const {
    const double now = since.count();
    const Size pillSize = size();
    const bool hasLeft = is<OverlayPhase::Leaving>(phase) && !isMoving();
    if (is<OverlayPhase::Hidden>(phase) || hasLeft || pillSize.width < 1 || pillSize.height < 1)
        return {};

    const bool hasNotch = notch.height > 0;
    Rect pill = pillFrame(pillSize, notch);
    if (is<OverlayPhase::Failure>(phase)) {
        const double done = part(now, 0, shaking);
        pill.x += shakeWidth * (1 - done) * std::sin(6 * std::numbers::pi * done);
    }
    const double radius = std::min({largestRadius, pill.height / 2, pill.width / 2});
    PanelDrawing drawing;
    // Starts above the edge, so that only the lower corners are round.
    const double above = hasNotch ? radius : 0;
    drawing.emplace_back(RoundedRectangle{.frame = {.x = pill.x,
                                                    .y = pill.y - above,
                                                    .width = pill.width,
                                                    .height = pill.height + above},
                                          .radius = radius,
                                          .color = pillColor});

    const bool isWidening = begin.width < restingSize(phase, notch).width - 1;
    const double shown = isWidening ? now - widening : now;
    const double alpha = part(shown, 0, appearing);
    if (alpha <= 0) return drawing;
    const Rect room{.x = pill.x,
                    .y = pill.y + notch.height,
                    .width = pill.width,
                    .height = pill.height - notch.height};
    const std::string text = textOf(phase);
    Point icon = room.centre();
    if (!text.empty()) icon.x = room.x + inset + ringRadius;
    Painter painter(drawing, shown, alpha);
    std::visit(Content{.painter = painter, .icon = icon, .hasNotch = hasNotch}, phase);
    if (!text.empty()) {
        const double left = icon.x + ringRadius + inset;
        painter.text(
            text,
            {.x = left, .y = room.y, .width = room.maxX() - inset - left, .height = room.height});
    }
    return drawing;
}

bool Island::isMoving() const {
    return std::visit(Motion{.now = since.count()}, phase);
}

}  // namespace marrowby
