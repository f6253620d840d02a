// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/ApplicationWindows.h"

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// Windows without a screen, whose controls are pressed by their labels. Main thread.
class SceneWindows final : public ApplicationWindows {
  public:
    /// Called with the guide's sentence at every drawing of it.
    std::function<void(const std::string& hint)> onGuide;

    void show(Window window, WindowPresenter& presenter) override;
    void refresh(Window window) override;
    void close(Window window) override;
    [[nodiscard]] bool isOpen(Window window) const override;

    /// The window in front, which must be open, as for all below.
    [[nodiscard]] WindowPresenter& presenter();
    [[nodiscard]] WindowPage page();
    [[nodiscard]] Window front() const { return front_; }
    void closeByUser();

    /// False where there is no such control or it is disabled.
    bool press(std::string_view title);
    bool toggle(std::string_view title, bool isOn);
    bool choose(std::string_view title, std::string_view option);
    /// Into the page's text field.
    bool write(std::string_view text);
    /// Into the page's secret field.
    bool typeSecret(std::string_view text);

    /// The first of this kind on the page.
    template <typename Row>
    [[nodiscard]] std::optional<Row> row() {
        const WindowPage shown = page();
        for (const WindowRow& row : shown.rows) {
            if (const auto* found = std::get_if<Row>(&row)) return *found;
        }
        return std::nullopt;
    }

  private:
    static std::size_t index(Window window) { return static_cast<std::size_t>(window); }

    std::array<WindowPresenter*, 2> presenters_{};
    Window front_ = Window::welcome;
};

}  // namespace marrowby
