#pragma once

#include "Unlock/ApplicationWindows.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace marrowby {

/// Windows without a screen, and a user who finds controls by their titles.
class FakeWindows final : public ApplicationWindows {
  public:
    void show(Window window, WindowPresenter& presenter) override {
        presenters_[index(window)] = &presenter;
        front = window;
    }
    void refresh(Window window) override { refreshes += isOpen(window) ? 1 : 0; }
    void close(Window window) override { presenters_[index(window)] = nullptr; }
    [[nodiscard]] bool isOpen(Window window) const override {
        return presenters_[index(window)] != nullptr;
    }

    [[nodiscard]] WindowPresenter& presenter() { return *presenters_[index(front)]; }
    [[nodiscard]] WindowPage page() { return presenter().page(); }
    void closeByUser() {
        WindowPresenter& closed = presenter();
        close(front);
        closed.windowClosed();
    }

    /// False where there is no such button, or it is off.
    bool press(std::string_view title) {
        for (const WindowButton& button : buttons()) {
            if (button.title != title || !button.isEnabled) continue;
            presenter().press(button.id);
            return true;
        }
        return false;
    }
    bool toggle(std::string_view title, bool isOn) {
        for (const WindowRow& row : page().rows) {
            const auto* toggle = std::get_if<WindowRow::Toggle>(&row);
            if (toggle == nullptr || toggle->title != title) continue;
            presenter().toggle(toggle->id, isOn);
            return true;
        }
        return false;
    }
    bool choose(std::string_view title, std::string_view option) {
        for (const WindowRow& row : page().rows) {
            const auto* choice = std::get_if<WindowRow::Choice>(&row);
            if (choice == nullptr || choice->title != title) continue;
            const auto place = std::ranges::find(choice->options, option);
            if (place == choice->options.end()) return false;
            presenter().choose(choice->id,
                               static_cast<std::size_t>(place - choice->options.begin()));
            return true;
        }
        return false;
    }
    void typePassword(std::string_view text) {
        const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
        presenter().enter({WindowControl::password}, SecretBytes::copyOf(bytes).value());
    }
    template <typename Row>
    [[nodiscard]] std::optional<Row> row() {
        for (const WindowRow& row : page().rows) {
            if (const auto* found = std::get_if<Row>(&row)) return *found;
        }
        return std::nullopt;
    }

    Window front = Window::welcome;
    int refreshes = 0;

  private:
    static std::size_t index(Window window) { return static_cast<std::size_t>(window); }
    [[nodiscard]] std::vector<WindowButton> buttons() {
        const WindowPage shown = page();
        std::vector<WindowButton> all = shown.buttons;
        for (const WindowRow& row : shown.rows) {
            if (const auto* actions = std::get_if<WindowRow::Actions>(&row))
                all.insert(all.end(), actions->buttons.begin(), actions->buttons.end());
            if (const auto* status = std::get_if<WindowRow::Status>(&row); status && status->fix)
                all.push_back(*status->fix);
        }
        return all;
    }

    std::array<WindowPresenter*, 2> presenters_{};
};

}  // namespace marrowby
