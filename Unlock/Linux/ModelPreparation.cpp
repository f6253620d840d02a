// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/ModelPreparation.h"

#include "UnlockCore/Foundation/Phrase.h"

#include <QCoreApplication>
#include <QPointer>
#include <QProcess>
#include <QStringList>
#include <QTimer>
#include <utility>

namespace marrowby {

namespace {

QString lastLine(const QByteArray& output) {
    const QStringList lines = QString::fromUtf8(output).split('\n', Qt::SkipEmptyParts);
    return lines.isEmpty() ? QString() : lines.last().trimmed();
}

}  // namespace

ModelPreparation::ModelPreparation(const std::filesystem::path& script,
                                   const std::filesystem::path& folder, Callbacks callbacks)
    : callbacks_(std::move(callbacks)), process_(std::make_unique<QProcess>()) {
    QProcess* const process = process_.get();
    QObject::connect(process, &QProcess::readyReadStandardOutput, process, [this, process] {
        const QString line = lastLine(process->readAllStandardOutput());
        if (!line.isEmpty()) callbacks_.onProgress(line.toStdString());
    });
    QObject::connect(process, &QProcess::errorOccurred, process,
                     [this](QProcess::ProcessError error) {
                         if (error == QProcess::FailedToStart)
                             end(translated("The script that prepares them can’t be run."));
                     });
    QObject::connect(
        process, &QProcess::finished, process,
        [this, process](int code, QProcess::ExitStatus status) {
            if (status == QProcess::NormalExit && code == 0) return end({});
            const QString why = lastLine(process->readAllStandardError());
            end(why.isEmpty() ? translated("They couldn’t be prepared.") : why.toStdString());
        });
    process->start(QString::fromStdString(script.string()),
                   {QStringLiteral("--progress"), QString::fromStdString(folder.string())});
}

ModelPreparation::~ModelPreparation() {
    process_->disconnect();
    process_->kill();
    process_->waitForFinished();
}

void ModelPreparation::end(const std::string& problem) {
    // On a later turn: that may destroy the process, whose signal is being handled.
    QTimer::singleShot(0, QCoreApplication::instance(),
                       [process = QPointer(process_.get()), onEnd = callbacks_.onEnd, problem] {
                           if (process) onEnd(problem);
                       });
}

}  // namespace marrowby
