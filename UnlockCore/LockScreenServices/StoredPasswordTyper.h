// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/PasswordTyping.h"
#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/LockScreenServices/TypingsUnderWay.h"
#include "UnlockCore/Platform/KeyEvents.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/PlatformWords.h"
#include "UnlockCore/Platform/SystemClock.h"
#include "UnlockCore/Platform/WorkQueues.h"
#include "UnlockCore/Storage/CredentialStore.h"

#include <functional>
#include <memory>

namespace marrowby {

/// Types the saved password on the background queue. A typing stops when the vault is locked. The
/// destructor stops it and waits; of the references only the main thread is used after that.
class StoredPasswordTyper final : public PasswordTyping {
  public:
    StoredPasswordTyper(const CredentialStore& credentials, KeyEvents& keyEvents,
                        WorkQueues& workQueues, MainThread& mainThread, const SystemClock& clock,
                        const PlatformWords& words)
        : credentials_(credentials),
          keyEvents_(keyEvents),
          workQueues_(workQueues),
          mainThread_(mainThread),
          clock_(clock),
          words_(words) {}
    ~StoredPasswordTyper() override { typings_->end(); }
    StoredPasswordTyper(const StoredPasswordTyper&) = delete;
    StoredPasswordTyper& operator=(const StoredPasswordTyper&) = delete;

    /// Wakes the field on the background queue; a typing waits for the end of that.
    void expectTyping(std::function<bool()> stillLocked) override;
    void typeStoredPassword(std::function<bool()> stillLocked,
                            std::function<void(TypingOutcome)> completion) override;
    /// A typing under way ends as stopped. Any thread.
    void stop() { typings_->stop(); }

  private:
    /// Until the typing is stopped, the vault locked or the screen unlocked.
    [[nodiscard]] std::function<bool()> mayGoOn(TypingsUnderWay::Order order,
                                                std::function<bool()> stillLocked) const;

    const CredentialStore& credentials_;
    KeyEvents& keyEvents_;
    WorkQueues& workQueues_;
    MainThread& mainThread_;
    const SystemClock& clock_;
    const PlatformWords& words_;
    /// Held while keys are posted.
    const std::shared_ptr<Mutex> posting_ = std::make_shared<Mutex>();
    const std::shared_ptr<TypingsUnderWay> typings_ = std::make_shared<TypingsUnderWay>();
};

}  // namespace marrowby
