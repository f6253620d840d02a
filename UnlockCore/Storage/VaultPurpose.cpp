#include "UnlockCore/Storage/VaultPurpose.h"

namespace marrowby {

std::string_view rawValue(VaultPurpose purpose) {
    switch (purpose) {
        case VaultPurpose::faces:
            return "faces";
        case VaultPurpose::password:
            return "password";
    }
    return {};
}

}  // namespace marrowby
