// SPDX-License-Identifier: Apache-2.0
#include "Unlock/CommandResponder.h"

#include "Unlock/Fact.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <utility>
#include <vector>

namespace marrowby {

namespace {

using Status = CommandReply::Status;

constexpr auto inTheSettings = Phrase("See “marrowby-unlock settings”.");

std::string saved(bool isSaved) {
    return isSaved ? translated("saved.") : translated("not saved.");
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += (text.empty() ? "" : "\n") + line;
    return text;
}

}  // namespace

CommandResponder::CommandResponder(UnlockModel& model, SystemSettings& systemSettings, Hooks hooks)
    : model_(model), systemSettings_(systemSettings), hooks_(std::move(hooks)) {}

void CommandResponder::carryOut(const Command& command, CommandAnswer answer) {
    model_.refresh();
    switch (command.verb) {
        case Command::Verb::status:
            return answer(status());
        case Command::Verb::doctor:
            return answer(facts());
        case Command::Verb::look:
            return look(std::move(answer));
        case Command::Verb::pause:
            return answer(pause(command));
        case Command::Verb::resume:
            return answer(resume());
        case Command::Verb::settings:
            answer({});
            return hooks_.showSettings();
        case Command::Verb::quit:
            answer({});
            return hooks_.quit();
    }
}

CommandReply CommandResponder::status() const {
    const UnlockStatus status = model_.status();
    return {
        .status = status.isReady() ? Status::done : Status::no,
        .text = translated("{title}: {detail}",
                           {{"title", status.title(model_.words())},
                            {"detail", status.detail(model_.words(), model_.state().opening)}})};
}

CommandReply CommandResponder::facts() const {
    const UnlockModel::State& state = model_.state();
    const UnlockStatus status = model_.status();
    const auto fix = status.fix();
    std::vector<Fact> facts{
        {.subject = translated("Status"),
         .isGood = status.isReady(),
         .what = this->status().text,
         .fix = fix ? translated("“{button}” in the settings does it.",
                                 {{"button", title(*fix, model_.words())}})
                    : std::string()},
        {.subject = translated("Face"),
         .isGood = state.isEnrolled,
         .what = saved(state.isEnrolled),
         .fix = translated(inTheSettings)},
        opening(),
        {.subject = translated("Open at login"),
         .isGood = systemSettings_.opensAtLogin(),
         .what =
             systemSettings_.opensAtLogin()
                 ? translated("on.")
                 : translated("off, so nothing looks for you after a restart until you open it."),
         .fix = translated(inTheSettings),
         .need = Fact::Need::optional}};
    if (state.problem)
        facts.push_back(
            {.subject = translated("Last problem"), .isGood = false, .what = *state.problem});
    CommandReply reply;
    std::vector<std::string> lines;
    for (const Fact& fact : facts) {
        lines.push_back(fact.line());
        if (fact.isMissing()) reply.status = Status::no;
    }
    reply.text = joined(lines);
    return reply;
}

Fact CommandResponder::opening() const {
    const UnlockModel::State& state = model_.state();
    switch (state.opening) {
        case LockOpening::typing:
            return {.subject = translated(model_.words().password.atStart),
                    .isGood = state.hasPassword,
                    .what = saved(state.hasPassword),
                    .fix = translated(inTheSettings)};
        case LockOpening::asking:
            return {.subject = translated("Unlocking without a password"),
                    .isGood = state.settings.asksDesktop,
                    .what = state.settings.asksDesktop ? translated("allowed.")
                                                       : translated("not allowed."),
                    .fix = translated(inTheSettings)};
        case LockOpening::forbidden:
        case LockOpening::unsupported:
            break;
    }
    return {.subject = translated("Opening the lock"),
            .isGood = false,
            .what = translated(reasonNotPossible(state.opening))};
}

CommandReply CommandResponder::pause(const Command& command) {
    constexpr double minute = 60;
    std::optional<TimeInterval> atMost;
    if (command.minutes) atMost = TimeInterval(static_cast<double>(*command.minutes) * minute);
    model_.pause(atMost);
    if (!command.minutes) return {.text = translated("Paused until “marrowby-unlock resume”.")};
    return {.text = counted("Paused for {count} minute.", "Paused for {count} minutes.",
                            static_cast<std::uint64_t>(*command.minutes))};
}

CommandReply CommandResponder::resume() {
    if (!model_.state().isPaused) return {.text = translated("It was not paused.")};
    model_.resume();
    return {.text = translated("Resumed.")};
}

void CommandResponder::look(CommandAnswer answer) {
    const bool types = model_.state().opening == LockOpening::typing;
    model_.tryLook([answer = std::move(answer), types](const auto& result) {
        if (!result) return answer({.status = Status::no, .text = result.error()});
        std::vector<std::string> lines = result->lines;
        lines.push_back(
            !result->wouldUnlock ? translated("At the lock screen it would not unlock.")
            : types              ? translated("At the lock screen it would type your password now.")
                    : translated("At the lock screen it would have the desktop unlock now."));
        answer({.status = result->wouldUnlock ? Status::done : Status::no, .text = joined(lines)});
    });
}

}  // namespace marrowby
