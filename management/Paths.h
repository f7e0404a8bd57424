#pragma once

#include <string>
#include <string_view>
#include <vector>

// Paths of groups and of folders alike.

namespace management {

/// The names that a path is made of. @throws Error (invalid) for what is not a path.
std::vector<std::string> SplitPath(const std::string& path);
/// A name as paths have it.
std::string PathEscaped(std::string_view name);

struct ParentAndName {
    std::string parent; ///< still a path
    std::string name;
};

/// Where something is to be added: the nearest parent that is there, still as a path, and the names to add below it.
struct NewPath {
    std::string parent;
    std::vector<std::string> names;
};

/// Takes a new path apart. @param withParents  whether names of the parent may be missing too.
/// @param splitLast  takes the last name off a path, as SplitLast does. @param isThere  whether a path leads anywhere.
/// @throws what these throw.
template <class SplitLast, class IsThere>
NewPath SplitNewPath(const std::string& path, bool withParents, SplitLast splitLast, IsThere isThere)
{
    const auto hasOneName = [](const std::string& text) {
        return text.starts_with('/') ? SplitPath(text).size() == 1 : text.find('/') == std::string::npos;
    };
    ParentAndName parts = splitLast(path);
    std::vector<std::string> names = {parts.name};
    while (withParents && !hasOneName(parts.parent) && !isThere(parts.parent)) {
        parts = splitLast(parts.parent);
        names.insert(names.begin(), parts.name);
    }
    return {parts.parent, names};
}

/// The paths of several things with commas between them.
template <class Tree, class Key>
std::string PathsOf(const Tree& tree, const std::vector<Key>& keys)
{
    std::string text;
    for (const Key& key : keys) {
        text += (text.empty() ? "" : ", ") + tree.PathOf(key);
    }
    return text;
}

} // namespace management
