#include "Tests/Program/StagedProgram.h"

#include <string_view>

namespace marrowby {

StagedProgram::StagedProgram(QtLoop& loop, const QProcessEnvironment& environment,
                             const QStringList& arguments)
    : loop_(loop) {
    process_.setProcessEnvironment(environment);
    process_.start(MARROWBY_PROGRAM, arguments);
}

StagedProgram::~StagedProgram() {
    kill();
}

bool StagedProgram::order(const std::string& line) {
    process_.write((line + "\n").c_str());
    return says("done: " + line.substr(0, line.find(' ')));
}

bool StagedProgram::says(const std::string& beginning) {
    std::size_t place = std::string::npos;
    const bool said = loop_.runUntil([&] {
        read();
        place = ("\n" + unread()).find("\n" + beginning);
        return place != std::string::npos || process_.state() == QProcess::NotRunning;
    });
    if (!said || place == std::string::npos) return false;
    const std::size_t end = words_.find('\n', heard_ + place);
    heard_ = end == std::string::npos ? words_.size() : end + 1;
    return true;
}

bool StagedProgram::hasSaid(const std::string& beginning) {
    read();
    return ("\n" + unread()).find("\n" + beginning) != std::string::npos;
}

bool StagedProgram::hasFocus() {
    constexpr std::string_view focus = "focus: ";
    read();
    const std::size_t last = words_.rfind(focus);
    if (last == std::string::npos) return false;
    const std::size_t name = last + focus.size();
    return name < words_.size() && words_[name] != '\n';
}

std::string StagedProgram::recentWords() {
    read();
    return unread() + process_.readAllStandardError().toStdString();
}

void StagedProgram::kill() {
    if (process_.state() == QProcess::NotRunning) return;
    process_.kill();
    process_.waitForFinished();
}

int StagedProgram::terminate() {
    process_.terminate();
    return awaitEnd();
}

int StagedProgram::awaitEnd() {
    const bool ended = loop_.runUntil([this] { return process_.state() == QProcess::NotRunning; });
    return ended && process_.exitStatus() == QProcess::NormalExit ? process_.exitCode() : -1;
}

void StagedProgram::read() {
    words_ += process_.readAllStandardOutput().toStdString();
}

}  // namespace marrowby
