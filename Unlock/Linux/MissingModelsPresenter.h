// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Pages/WindowPresenter.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace marrowby {

/// The window shown without face models: what is missing, and its preparation. Main thread.
class MissingModelsPresenter final : public WindowPresenter {
  public:
    struct Hooks {
        std::function<void()> onLookAgain;
        std::function<void()> onQuit;
        /// Empty where only the command can prepare them.
        std::function<void()> onPrepare;
        std::function<void()> onCancel;
        std::function<void(const std::string& command)> onCopy;
    };

    /// `command` builds the pack.
    MissingModelsPresenter(std::string command, Hooks hooks)
        : command_(std::move(command)), hooks_(std::move(hooks)) {}

    /// The preparation runs; none when it has ended.
    void setProgress(std::optional<std::string> line) {
        hasBegun_ = true;
        progress_ = std::move(line);
    }

    /// Why the models can’t be used, as a sentence.
    void say(std::string problem) { problem_ = std::move(problem); }
    [[nodiscard]] const std::string& problem() const { return problem_; }

    [[nodiscard]] WindowPage page() const override;
    void press(ControlID id) override;
    void toggle(ControlID /*id*/, bool /*isOn*/) override {}
    void choose(ControlID /*id*/, std::size_t /*option*/) override {}
    void enter(ControlID /*id*/, std::string /*text*/) override {}
    void enter(ControlID /*id*/, SecretBytes /*secret*/) override {}
    void windowClosed() override {}

  private:
    const std::string command_;
    const Hooks hooks_;
    std::string problem_;
    std::optional<std::string> progress_;
    bool hasBegun_ = false;
};

}  // namespace marrowby
