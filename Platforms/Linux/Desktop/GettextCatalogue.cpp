// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/GettextCatalogue.h"

#include <clocale>
#include <system_error>

#include <libintl.h>

namespace marrowby {

namespace {

constexpr const char* domain = "marrowby-unlock";

}  // namespace

std::filesystem::path GettextCatalogue::folderFor(const std::filesystem::path& program) {
    std::error_code error;
    for (auto folder = program.parent_path(); folder.has_relative_path();
         folder = folder.parent_path()) {
        if (std::filesystem::is_directory(folder / "share/locale", error))
            return folder / "share/locale";
    }
    return {};
}

GettextCatalogue::GettextCatalogue(const std::filesystem::path& folder) {
    // Not LC_ALL: numbers keep their form.
    std::setlocale(LC_CTYPE, "");
    std::setlocale(LC_MESSAGES, "");
    // To glibc an empty name is the working directory, which may be anybody's.
    if (!folder.empty()) ::bindtextdomain(domain, folder.c_str());
    ::bind_textdomain_codeset(domain, "UTF-8");
}

std::string GettextCatalogue::text(const char* english) const {
    return ::dgettext(domain, english);
}

std::string GettextCatalogue::text(const char* one, const char* many, std::uint64_t count) const {
    return ::dngettext(domain, one, many, count);
}

}  // namespace marrowby
