#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/LoginSession.h"

#include <optional>
#include <utility>

namespace marrowby {

/// A login session on the console, unlocked until told otherwise.
class FakeLoginSession final : public LoginSession {
  public:
    [[nodiscard]] std::optional<SessionDictionary> copyCurrentDictionary() const override {
        const MutexLock lock(mutex_);
        return dictionary_;
    }

    void setLocked(bool locked) { set(sessionkey::screenIsLocked, locked); }
    void setOnConsole(bool onConsole) { set(sessionkey::onConsole, onConsole); }
    /// Nothing: there is no session to ask about.
    void setDictionary(std::optional<SessionDictionary> dictionary) {
        const MutexLock lock(mutex_);
        dictionary_ = std::move(dictionary);
    }

  private:
    void set(const char* key, bool value) {
        const MutexLock lock(mutex_);
        if (!dictionary_) dictionary_.emplace();
        (*dictionary_)[key] = value;
    }

    mutable Mutex mutex_;
    std::optional<SessionDictionary> dictionary_ GUARDED_BY(mutex_) = SessionDictionary{
        {sessionkey::onConsole, true}};
};

}  // namespace marrowby
