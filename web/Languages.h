#pragma once

#include "management/Catalogue.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace web {

/// The languages in which the server speaks to people: English, and those that there are catalogues for.
class Languages {
public:
    struct One {
        std::string tag = "en";                                     ///< as HTTP has it, such as zh-CN
        std::unique_ptr<const management::Language> catalogue = {}; ///< null: English
    };

    /// @param folder  of catalogues, LANGUAGE/LC_MESSAGES/qvadmin.mo each; what cannot be read there is left out, and
    /// no folder, or an empty name, is one without any.
    explicit Languages(const std::filesystem::path& folder);

    /// The language that an Accept-Language asks for most that there is; English where there is none of them.
    [[nodiscard]] const One& For(std::string_view accepted) const;
    /// The tag of one of these languages. @param catalogue  its; null: English.
    [[nodiscard]] const std::string& TagOf(const management::Language* catalogue) const;

private:
    std::vector<One> m_all; ///< English first
};

} // namespace web
