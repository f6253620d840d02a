#pragma once

#include "UnlockCore/Engine/PasswordTyping.h"
#include "UnlockCore/Platform/KeyEvents.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/WorkQueues.h"
#include "UnlockCore/Storage/CredentialStore.h"

#include <functional>

namespace marrowby {

/// Types the saved password on the background queue. What it is made of outlives that queue's work.
class StoredPasswordTyper final : public PasswordTyping {
  public:
    StoredPasswordTyper(const CredentialStore& credentials, KeyEvents& keyEvents,
                        WorkQueues& workQueues, MainThread& mainThread)
        : credentials_(credentials),
          keyEvents_(keyEvents),
          workQueues_(workQueues),
          mainThread_(mainThread) {}

    void typeStoredPassword(std::function<bool()> stillLocked,
                            std::function<void(TypingOutcome)> completion) override;

  private:
    const CredentialStore& credentials_;
    KeyEvents& keyEvents_;
    WorkQueues& workQueues_;
    MainThread& mainThread_;
};

}  // namespace marrowby
