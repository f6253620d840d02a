// SPDX-License-Identifier: Apache-2.0
#include "Tests/Unlock/SceneWindows.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>

namespace marrowby {

namespace {

std::vector<WindowButton> buttonsOf(const WindowPage& page) {
    std::vector<WindowButton> buttons = page.buttons;
    for (const WindowRow& row : page.rows) {
        if (const auto* actions = std::get_if<WindowRow::Actions>(&row))
            buttons.insert(buttons.end(), actions->buttons.begin(), actions->buttons.end());
        if (const auto* status = std::get_if<WindowRow::Status>(&row); status && status->fix)
            buttons.push_back(*status->fix);
    }
    return buttons;
}

}  // namespace

void SceneWindows::show(Window window, WindowPresenter& presenter) {
    presenters_[index(window)] = &presenter;
    front_ = window;
}

void SceneWindows::refresh(Window window) {
    if (!isOpen(window) || window != front_ || !onGuide) return;
    if (const auto guide = row<WindowRow::Guide>()) onGuide(guide->hint);
}

void SceneWindows::close(Window window) {
    presenters_[index(window)] = nullptr;
}

bool SceneWindows::isOpen(Window window) const {
    return presenters_[index(window)] != nullptr;
}

WindowPresenter& SceneWindows::presenter() {
    return *presenters_[index(front_)];
}

WindowPage SceneWindows::page() {
    return presenter().page();
}

void SceneWindows::closeByUser() {
    WindowPresenter& closed = presenter();
    close(front_);
    closed.windowClosed();
}

bool SceneWindows::press(std::string_view title) {
    for (const WindowButton& button : buttonsOf(page())) {
        if (button.title != title || !button.isEnabled) continue;
        presenter().press(button.id);
        return true;
    }
    return false;
}

bool SceneWindows::toggle(std::string_view title, bool isOn) {
    for (const WindowRow& row : page().rows) {
        const auto* toggle = std::get_if<WindowRow::Toggle>(&row);
        if (toggle == nullptr || toggle->title != title) continue;
        presenter().toggle(ControlID(toggle->id), isOn);
        return true;
    }
    return false;
}

bool SceneWindows::choose(std::string_view title, std::string_view option) {
    for (const WindowRow& row : page().rows) {
        const auto* choice = std::get_if<WindowRow::Choice>(&row);
        if (choice == nullptr || choice->title != title) continue;
        const auto place = std::ranges::find(choice->options, option);
        if (place == choice->options.end()) return false;
        presenter().choose(choice->id, static_cast<std::size_t>(place - choice->options.begin()));
        return true;
    }
    return false;
}

bool SceneWindows::write(std::string_view text) {
    const auto field = row<WindowRow::TextField>();
    if (field) presenter().enter(field->id, std::string(text));
    return field.has_value();
}

bool SceneWindows::typeSecret(std::string_view text) {
    const auto field = row<WindowRow::SecretField>();
    if (!field) return false;
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    auto secret = SecretBytes::copyOf(bytes);
    if (!secret) return false;
    presenter().enter(field->id, *std::move(secret));
    return true;
}

}  // namespace marrowby
