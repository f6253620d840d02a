#include "UnlockCore/Storage/CredentialError.h"

namespace marrowby {

std::string_view description(CredentialError error) {
    switch (error) {
        case CredentialError::empty:
            return "The password is empty.";
        case CredentialError::none:
            return "No password is saved.";
    }
    return {};
}

}  // namespace marrowby
