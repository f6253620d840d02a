// SPDX-License-Identifier: Apache-2.0
#include "Tests/Program/StagedProgram.h"

#include "Simulation/Desktop/ChildProcess.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <ranges>
#include <sstream>
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>

namespace marrowby {

namespace {

/// The number of elements up to the first that `matches` after the first `heard`; 0 without one.
template <typename Element>
std::size_t heardUpTo(const std::vector<Element>& all, std::size_t heard, const auto& matches) {
    const auto found =
        std::find_if(all.begin() + static_cast<std::ptrdiff_t>(heard), all.end(), matches);
    return found == all.end() ? 0 : static_cast<std::size_t>(found - all.begin()) + 1;
}

auto begins(const std::string& beginning) {
    return [&beginning](const std::string& line) { return line.starts_with(beginning); };
}

auto tellsOf(std::string_view event, std::string_view subject) {
    return [event, subject](const ProgramJournal::Entry& entry) {
        return entry.event == event && (subject.empty() || entry.subject == subject);
    };
}

std::vector<std::string> variables(const QProcessEnvironment& environment) {
    std::vector<std::string> list;
    for (const QString& variable : environment.toStringList())
        list.push_back(variable.toStdString());
    return list;
}

}  // namespace

StagedProgram::StagedProgram(QtLoop& loop, QProcessEnvironment environment,
                             std::vector<std::string> arguments, const std::string& program)
    : loop_(loop) {
    if (!folder_) {
        ADD_FAILURE() << folder_.error();
        return;
    }
    const std::string socket = folder_->path() / "journal";
    auto journal =
        ProgramJournal::create(socket, [this](const Entry& entry) { entries_.push_back(entry); });
    if (!journal) {
        ADD_FAILURE() << journal.error();
        return;
    }
    journal_ = *std::move(journal);
    environment.insert("MARROWBY_JOURNAL", QString::fromStdString(socket));
    auto started =
        ProgramOnStage::start(program, std::move(arguments), variables(environment),
                              [this](const std::string& line) { lines_.push_back(line); });
    if (!started) {
        ADD_FAILURE() << started.error();
        return;
    }
    program_ = *std::move(started);
}

bool StagedProgram::order(const std::string& line) {
    return program_ && program_->order(line) && says("done: " + line.substr(0, line.find(' ')));
}

bool StagedProgram::says(const std::string& beginning) {
    return hears(heardLines_, [&] { return heardUpTo(lines_, heardLines_, begins(beginning)); });
}

bool StagedProgram::hasSaid(const std::string& beginning) const {
    return heardUpTo(lines_, heardLines_, begins(beginning)) != 0;
}

bool StagedProgram::logs(std::string_view event, std::string_view subject) {
    return hears(heardEntries_,
                 [&] { return heardUpTo(entries_, heardEntries_, tellsOf(event, subject)); });
}

bool StagedProgram::hears(std::size_t& heard, const std::function<std::size_t()>& find) {
    std::size_t found = 0;
    (void)loop_.runUntil([&] {
        found = find();
        return found != 0 || !isRunning();
    });
    if (found == 0) {
        // Its last words may wait in the pipe when its end is noticed.
        loop_.runPending();
        found = find();
    }
    if (found != 0) heard = found;
    return found != 0;
}

bool StagedProgram::hasLogged(std::string_view event, std::string_view subject) const {
    return heardUpTo(entries_, heardEntries_, tellsOf(event, subject)) != 0;
}

bool StagedProgram::hasFocus() const {
    const std::string focus = "focus: ";
    const auto last = std::ranges::find_if(lines_ | std::views::reverse, begins(focus));
    return last != lines_.rend() && *last != focus;
}

std::string StagedProgram::recentWords() const {
    std::string words;
    for (const std::string& line : lines_ | std::views::drop(heardLines_))
        words += line + "\n";
    for (const Entry& entry : entries_ | std::views::drop(heardEntries_))
        words += "journal: " + entry.message + "\n";
    return words;
}

void StagedProgram::kill() {
    if (!isRunning()) return;
    program_->process().send(SIGKILL);
    (void)awaitEnd();
}

int StagedProgram::terminate() {
    if (isRunning()) program_->process().send(SIGTERM);
    return awaitEnd();
}

int StagedProgram::awaitEnd() {
    const bool ended = loop_.runUntil([this] { return !isRunning(); });
    // What it said at its end.
    loop_.runPending();
    if (!ended || !program_) return -1;
    return program_->process().exitStatus().value_or(-1);
}

std::string commandReply(QtLoop& loop, const QProcessEnvironment& environment,
                         std::vector<std::string> words) {
    const auto folder = PrivateFolder::create();
    if (!folder) return folder.error();
    const std::string printed = folder->path() / "printed";
    const OwnedFile output(
        ::open(printed.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    words.insert(words.begin(), MARROWBY_PROGRAM);
    const auto terminal = ChildProcess::start({.arguments = std::move(words),
                                               .environment = variables(environment),
                                               .standardOutput = output.get(),
                                               .standardError = output.get(),
                                               .endSignal = SIGKILL});
    if (!terminal) return terminal.error();
    EXPECT_TRUE(loop.runUntil([&] { return !terminal->isRunning(); }));
    std::ostringstream reply;
    reply << terminal->exitStatus().value_or(-1) << " " << std::ifstream(printed).rdbuf();
    return reply.str();
}

}  // namespace marrowby
