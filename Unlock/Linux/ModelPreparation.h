// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

class QProcess;

namespace marrowby {

/// Runs the script that downloads and prepares the models. Main thread; destroying it ends the
/// script, which goes on where it was at its next run.
class ModelPreparation {
  public:
    struct Callbacks {
        /// The script's last line.
        std::function<void(const std::string&)> onProgress;
        /// Empty after success, else why not. May destroy this.
        std::function<void(const std::string&)> onEnd;
    };

    ModelPreparation(const std::filesystem::path& script, const std::filesystem::path& folder,
                     Callbacks callbacks);
    ~ModelPreparation();
    ModelPreparation(const ModelPreparation&) = delete;
    ModelPreparation& operator=(const ModelPreparation&) = delete;

  private:
    void end(const std::string& problem);

    const Callbacks callbacks_;
    const std::unique_ptr<QProcess> process_;
};

}  // namespace marrowby
