// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Command.h"
#include "Unlock/Fact.h"
#include "Unlock/Model/UnlockModel.h"
#include "UnlockCore/Platform/SystemSettings.h"

#include <functional>
#include <string>

namespace marrowby {

/// Carries out the user's commands and answers them, without names of people. Main thread; the
/// references outlive it.
class CommandResponder {
  public:
    struct Hooks {
        std::function<void()> showSettings;
        std::function<void()> quit;
    };

    CommandResponder(UnlockModel& model, SystemSettings& systemSettings, Hooks hooks);

    /// The answer may come later; none comes once the model is gone.
    void carryOut(const Command& command, CommandAnswer answer);

  private:
    [[nodiscard]] CommandReply status() const;
    [[nodiscard]] CommandReply facts() const;
    /// Whether what opens the lock is set up.
    [[nodiscard]] Fact opening() const;
    [[nodiscard]] CommandReply pause(const Command& command);
    [[nodiscard]] CommandReply resume();
    void look(CommandAnswer answer);

    UnlockModel& model_;
    SystemSettings& systemSettings_;
    const Hooks hooks_;
};

}  // namespace marrowby
