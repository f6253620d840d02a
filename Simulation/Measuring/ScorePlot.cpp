// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Measuring/ScorePlot.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace marrowby {

namespace {

constexpr int width = 900;
constexpr int panelHeight = 320;
constexpr int margin = 60;
constexpr std::size_t bins = 50;

struct Series {
    std::string name;
    cv::Scalar colour;
    std::vector<double> values;
};

void label(cv::Mat& canvas, const std::string& text, cv::Point at, const cv::Scalar& colour) {
    cv::putText(canvas, text, at, cv::FONT_HERSHEY_SIMPLEX, 0.45, colour, 1, cv::LINE_AA);
}

/// The share of each series' values by bin, from `low` to 1.
void drawPanel(cv::Mat canvas, const std::string& title, double low,
               const std::vector<Series>& panel) {
    const cv::Scalar black(0, 0, 0);
    const int bottom = panelHeight - margin / 2;
    const int top = margin;
    label(canvas, title, {margin, 24}, black);
    const auto x = [&](double value) {
        return margin + cvRound((value - low) / (1 - low) * (width - 2 * margin));
    };
    cv::line(canvas, {x(low), bottom}, {x(1), bottom}, black);
    for (int i = 0; i <= 5; ++i) {
        const double value = low + (1 - low) * i / 5;
        label(canvas, cv::format("%.1f", value), {x(value) - 10, bottom + 18}, black);
    }
    int legend = margin + 200;
    for (const Series& series : panel) {
        label(canvas, series.name + " (" + std::to_string(series.values.size()) + ")", {legend, 44},
              series.colour);
        legend += 240;
        if (series.values.empty()) continue;
        std::vector<double> shares(bins);
        for (const double value : series.values) {
            const double place = std::clamp((value - low) / (1 - low), 0.0, 1.0);
            shares[std::min(bins - 1, static_cast<std::size_t>(place * bins))] +=
                1.0 / static_cast<double>(series.values.size());
        }
        std::vector<cv::Point> outline;
        for (std::size_t i = 0; i < bins; ++i) {
            const int y = bottom - cvRound(shares[i] * (bottom - top));
            const double step = (1 - low) / bins;
            outline.emplace_back(x(low + step * static_cast<double>(i)), y);
            outline.emplace_back(x(low + step * static_cast<double>(i + 1)), y);
        }
        cv::polylines(canvas, outline, false, series.colour, 2, cv::LINE_AA);
    }
}

}  // namespace

std::expected<void, std::string> writeScorePlot(const std::filesystem::path& file,
                                                std::span<const TakeResult> results) {
    const cv::Scalar green(60, 140, 20);
    const cv::Scalar red(40, 40, 210);
    std::vector<Series> live{{"people", green, {}}, {"attacks", red, {}}};
    std::vector<Series> likeness{{"own person", green, {}}, {"other persons", red, {}}};
    for (const TakeResult& result : results) {
        const bool isGenuine = result.label.purpose == Take::Purpose::genuine;
        if (result.live) live[isGenuine ? 0 : 1].values.push_back(*result.live);
        if (!isGenuine) continue;
        for (const auto& [person, one] : result.likeness) {
            const auto similarity = static_cast<double>(one.similarity);
            likeness[person == result.label.person ? 0 : 1].values.push_back(similarity);
        }
    }
    const std::unexpected unwritable("The plot “" + file.string() + "” couldn’t be written.");
    try {
        cv::Mat canvas(2 * panelHeight, width, CV_8UC3, cv::Scalar::all(255));
        drawPanel(canvas.rowRange(0, panelHeight),
                  "Real-face probability, mean of a take: share of takes", 0, live);
        drawPanel(canvas.rowRange(panelHeight, 2 * panelHeight),
                  "Likeness to an enrolled person, best frame of a take", -0.2, likeness);
        if (cv::imwrite(file.string(), canvas)) return {};
        return unwritable;
    } catch (const cv::Exception&) {
        return unwritable;
    }
}

}  // namespace marrowby
