#pragma once

#include "Tests/Platforms/Linux/QtLoop.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <cstddef>
#include <string>

namespace marrowby {

/// The program in a rehearsal build: takes orders on standard input and prints its windows' pages
/// and its log. Destroying it kills it.
class StagedProgram {
  public:
    StagedProgram(QtLoop& loop, const QProcessEnvironment& environment,
                  const QStringList& arguments = {});
    ~StagedProgram();
    StagedProgram(const StagedProgram&) = delete;
    StagedProgram& operator=(const StagedProgram&) = delete;

    /// False when it does not confirm.
    [[nodiscard]] bool order(const std::string& line);
    /// Waits for a line with this beginning, after those already waited for; false on timeout.
    [[nodiscard]] bool says(const std::string& beginning);
    /// Whether such a line is there already.
    [[nodiscard]] bool hasSaid(const std::string& beginning);
    /// Whether one of its windows has the keyboard focus.
    [[nodiscard]] bool hasFocus();
    /// Output since the last line waited for, standard error included.
    [[nodiscard]] std::string recentWords();

    /// SIGKILL.
    void kill();
    /// Asks it to end. Its exit status, or -1.
    [[nodiscard]] int terminate();
    /// Waits for its end. Its exit status, or -1.
    [[nodiscard]] int awaitEnd();

  private:
    void read();
    [[nodiscard]] std::string unread() const { return words_.substr(heard_); }

    QtLoop& loop_;
    QProcess process_;
    /// All output, and how much of it was waited for.
    std::string words_;
    std::size_t heard_ = 0;
};

}  // namespace marrowby
