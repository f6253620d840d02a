#pragma once

#include "Tests/Platforms/Linux/QtLoop.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <cstddef>
#include <string>

namespace marrowby {

/// The program on a stage: takes orders, and says what its windows show and its engine logs.
/// Destroying it kills it.
class StagedProgram {
  public:
    StagedProgram(QtLoop& loop, const QProcessEnvironment& environment,
                  const QStringList& arguments = {});
    ~StagedProgram();
    StagedProgram(const StagedProgram&) = delete;
    StagedProgram& operator=(const StagedProgram&) = delete;

    /// False when it doesn't say so.
    [[nodiscard]] bool order(const std::string& line);
    /// Waits for a line that begins so, after those already waited for. False when none comes.
    [[nodiscard]] bool says(const std::string& beginning);
    /// Whether such a line is there already, after those waited for.
    [[nodiscard]] bool hasSaid(const std::string& beginning);
    /// Whether a control in one of its windows has the keyboard.
    [[nodiscard]] bool hasFocus();
    /// What it said since the last line waited for, and what came to its standard error.
    [[nodiscard]] std::string recentWords();

    /// At once, as SIGKILL does.
    void kill();
    /// Asks it to end. Its exit status, or -1.
    [[nodiscard]] int terminate();
    /// Waits until it ends by itself. Its exit status, or -1.
    [[nodiscard]] int awaitEnd();

  private:
    void read();
    [[nodiscard]] std::string unread() const { return words_.substr(heard_); }

    QtLoop& loop_;
    QProcess process_;
    /// All that it said, and how much of it was waited for.
    std::string words_;
    std::size_t heard_ = 0;
};

}  // namespace marrowby
