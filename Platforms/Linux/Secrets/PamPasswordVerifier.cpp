// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Secrets/PamPasswordVerifier.h"

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Foundation/SecretBytes.h"
#include "UnlockCore/Foundation/Text.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include <security/pam_appl.h>

namespace marrowby {
namespace {

constexpr const char* systemRules = "/etc/pam.d";
constexpr std::size_t longestSentence = 300;

/// The password as a C string, alive while PAM may ask for it.
using Answer = SecretArray<char>;

std::expected<Answer, SecretMemoryError> answerOf(std::span<const std::uint8_t> password) {
    auto answer = Answer::create(password.size() + 1);
    if (answer) std::memcpy(answer->values().data(), password.data(), password.size());
    return answer;
}

/// State of one check, shared with the conversation function.
struct Dialogue {
    Answer& answer;
    bool hasAnswered = false;
    /// PAM_TEXT_INFO and PAM_ERROR_MSG texts.
    std::string told{};
};

/// PAM conversation function. PAM wipes and frees the responses.
int converse(int count, const pam_message** messages, pam_response** responses, void* data) {
    auto& dialogue = *static_cast<Dialogue*>(data);
    if (count <= 0 || count > PAM_MAX_NUM_MSG) return PAM_CONV_ERR;
    auto* replies = static_cast<pam_response*>(
        std::calloc(static_cast<std::size_t>(count), sizeof(pam_response)));
    if (replies == nullptr) return PAM_BUF_ERR;
    for (int i = 0; i < count; ++i) {
        const int style = messages[i]->msg_style;
        if (style == PAM_PROMPT_ECHO_OFF) {
            replies[i].resp = ::strdup(dialogue.answer.values().data());
            dialogue.hasAnswered = true;
        } else if ((style == PAM_ERROR_MSG || style == PAM_TEXT_INFO) &&
                   messages[i]->msg != nullptr && dialogue.told.size() < longestSentence) {
            dialogue.told += (dialogue.told.empty() ? "" : " ") + std::string(messages[i]->msg);
        }
    }
    *responses = replies;
    return PAM_SUCCESS;
}

/// No delay after a wrong password: the caller already runs as this account.
void noDelay(int /*result*/, unsigned /*microseconds*/, void* /*data*/) {}

class Conversation {
  public:
    Conversation(const PamPasswordVerifier::Service& service, const std::string& user,
                 Answer& answer)
        : dialogue_{.answer = answer}, conversation_{.conv = converse, .appdata_ptr = &dialogue_} {
        status_ = service.folder.empty()
                      ? ::pam_start(service.name.c_str(), user.c_str(), &conversation_, &handle_)
                      : ::pam_start_confdir(service.name.c_str(), user.c_str(), &conversation_,
                                            service.folder.c_str(), &handle_);
        if (status_ != PAM_SUCCESS) return;
        void (*delay)(int, unsigned, void*) = noDelay;
        (void)::pam_set_item(handle_, PAM_FAIL_DELAY, reinterpret_cast<const void*>(delay));
    }
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;
    ~Conversation() {
        if (handle_ != nullptr) ::pam_end(handle_, status_);
    }

    /// Refuses empty passwords: an account without one would accept any.
    [[nodiscard]] int authenticate() {
        if (status_ == PAM_SUCCESS)
            status_ = ::pam_authenticate(handle_, PAM_DISALLOW_NULL_AUTHTOK);
        return status_;
    }
    /// A failure before PAM asked for the password has another reason, such as too many earlier
    /// tries.
    [[nodiscard]] bool isPasswordWrong() const {
        return status_ == PAM_AUTH_ERR && dialogue_.hasAnswered;
    }
    [[nodiscard]] std::string sentence() const {
        switch (status_) {
            case PAM_USER_UNKNOWN:
                return translated("The system doesn’t know this account.");
            case PAM_MAXTRIES:
                return translated("There were too many tries. The system takes no more for now.");
            case PAM_ACCT_EXPIRED:
                return translated("This account has expired.");
            case PAM_CRED_EXPIRED:
            case PAM_NEW_AUTHTOK_REQD:
                return translated("The password has expired.");
            default:
                break;
        }
        if (!dialogue_.told.empty()) return dialogue_.told;
        if (status_ == PAM_AUTH_ERR)
            return translated("The system refused without asking for the password.");
        const char* text = ::pam_strerror(handle_, status_);
        return text != nullptr ? text : "";
    }

  private:
    Dialogue dialogue_;
    pam_conv conversation_;
    pam_handle_t* handle_ = nullptr;
    int status_ = PAM_SYSTEM_ERR;
};

}  // namespace

PamPasswordVerifier::Service PamPasswordVerifier::installedService() {
    for (const char* name : {"marrowby-unlock", "common-auth", "system-auth"}) {
        std::error_code error;
        if (std::filesystem::exists(std::filesystem::path(systemRules) / name, error))
            return {.name = name, .folder = {}};
    }
    return {.name = "login", .folder = {}};
}

PamPasswordVerifier::PamPasswordVerifier(std::string userName, Service service)
    : userName_(std::move(userName)), service_(std::move(service)) {}

PasswordCheckResult PamPasswordVerifier::check(std::span<const std::uint8_t> password) {
    if (password.empty() || !isValidUTF8(password)) return PasswordCheckResult::Incorrect{};
    auto answer = answerOf(password);
    if (!answer) return PasswordCheckResult::Unavailable{translated(description(answer.error()))};
    Conversation conversation(service_, userName_, *answer);
    if (conversation.authenticate() == PAM_SUCCESS) return PasswordCheckResult::Correct{};
    if (conversation.isPasswordWrong()) return PasswordCheckResult::Incorrect{};
    return PasswordCheckResult::Unavailable{conversation.sentence()};
}

}  // namespace marrowby
