// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Desktop/PrivateFolder.h"
#include "Simulation/Desktop/ProgramJournal.h"
#include "Simulation/Desktop/ProgramOnStage.h"
#include "Tests/Platforms/Linux/QtLoop.h"

#include <QProcessEnvironment>
#include <cstddef>
#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// A program on stage, its output and its journal. Destroying it kills it.
class StagedProgram {
  public:
    StagedProgram(QtLoop& loop, QProcessEnvironment environment,
                  std::vector<std::string> arguments = {},
                  const std::string& program = MARROWBY_PROGRAM);
    StagedProgram(const StagedProgram&) = delete;
    StagedProgram& operator=(const StagedProgram&) = delete;
    ~StagedProgram() { kill(); }

    /// False when it does not confirm.
    [[nodiscard]] bool order(const std::string& line);
    /// Waits for a line with this beginning, after those already waited for; false on timeout
    /// or at the program's end.
    [[nodiscard]] bool says(const std::string& beginning);
    /// Whether such a line is there already.
    [[nodiscard]] bool hasSaid(const std::string& beginning) const;
    /// The same for events of its journal, about `subject` unless that is empty.
    [[nodiscard]] bool logs(std::string_view event, std::string_view subject = {});
    [[nodiscard]] bool hasLogged(std::string_view event, std::string_view subject = {}) const;
    /// Whether one of its windows has the keyboard focus.
    [[nodiscard]] bool hasFocus() const;
    /// Lines and entries since those last waited for.
    [[nodiscard]] std::string recentWords() const;

    /// SIGKILL.
    void kill();
    /// Asks it to end. Its exit status, or -1.
    [[nodiscard]] int terminate();
    /// Waits for its end. Its exit status, or -1.
    [[nodiscard]] int awaitEnd();

  private:
    using Entry = ProgramJournal::Entry;

    [[nodiscard]] bool isRunning() const { return program_ && program_->isRunning(); }
    /// Waits until `find`, the number of elements up to what is waited for, is not 0 or the program
    /// has ended.
    [[nodiscard]] bool hears(std::size_t& heard, const std::function<std::size_t()>& find);

    QtLoop& loop_;
    const std::expected<PrivateFolder, std::string> folder_ = PrivateFolder::create();
    std::unique_ptr<ProgramJournal> journal_;
    std::unique_ptr<ProgramOnStage> program_;
    /// With how many of them were waited for.
    std::vector<std::string> lines_;
    std::size_t heardLines_ = 0;
    std::vector<Entry> entries_;
    std::size_t heardEntries_ = 0;
};

/// A terminal's command to the running program: its exit status, and then all that it printed.
[[nodiscard]] std::string commandReply(QtLoop& loop, const QProcessEnvironment& environment,
                                       std::vector<std::string> words);

}  // namespace marrowby
