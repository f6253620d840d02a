// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"

#include <filesystem>

namespace marrowby {

/// The texts in the language that LANGUAGE, LC_ALL, LC_MESSAGES and LANG choose, by glibc's
/// gettext.
class GettextCatalogue final : public Catalogue {
  public:
    /// Of the program's catalogues, LANGUAGE/LC_MESSAGES/marrowby-unlock.mo: share/locale in the
    /// nearest folder above the program, installed or built. Empty where there is none.
    [[nodiscard]] static std::filesystem::path folderFor(const std::filesystem::path& program);

    /// Takes the process's language from the environment: before any thread is started. An empty
    /// folder leaves glibc's own, the system's.
    explicit GettextCatalogue(const std::filesystem::path& folder);

    [[nodiscard]] std::string text(const char* english) const override;
    [[nodiscard]] std::string text(const char* one, const char* many,
                                   std::uint64_t count) const override;
};

}  // namespace marrowby
