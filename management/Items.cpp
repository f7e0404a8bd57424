#include "management/Items.h"

#include "basefun/ItemTypes.h"
#include "management/Errors.h"
#include "management/Names.h"
#include "management/Text.h"
#include "management/roles/Roles.h"
#include "management/users/Directory.h"
#include "management/users/Users.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

namespace management {

namespace {

struct KindOfItem {
    int type;
    std::string_view noun;
};

constexpr KindOfItem kKinds[] = {
    {kItemTypeUser, Translatable("user")},
    {kItemTypeGroup, Translatable("group")},
    {kItemTypeRole, Translatable("role")},
    {kItemTypeView, Translatable("view")},
};

const KindOfItem* KindOf(int type)
{
    const auto* kind = std::ranges::find(kKinds, type, &KindOfItem::type);
    return kind == std::end(kKinds) ? nullptr : kind;
}

/// An argument taken apart at its first colon.
struct Words {
    const KindOfItem* kind; ///< null when it begins with no kind of item
    std::string rest;
};

Words Split(const std::string& argument)
{
    const std::size_t colon = argument.find(':');
    const std::string_view noun = std::string_view(argument).substr(0, colon);
    const auto* kind = std::ranges::find(kKinds, noun, &KindOfItem::noun);
    if (colon == std::string::npos || kind == std::end(kKinds)) {
        return {nullptr, argument};
    }
    return {kind, argument.substr(colon + 1)};
}

bool IsNumber(std::string_view text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// The name of a place as Item has it.
std::string NameIn(const Organisation& organisation, ItemKey key)
{
    const Node* place = organisation.Find(key);
    if (place == nullptr) {
        return "";
    }
    return key.type == kItemTypeView ? place->name : organisation.PathOf(key);
}

/// @param text  what follows "view:". A number there, or a path from it on, means what it means everywhere.
ItemKey FindViewOrBelow(const Organisation& organisation, const std::string& text)
{
    const std::string view = text.starts_with(kIdPrefix) ? text.substr(kIdPrefix.size()) : text;
    if (IsNumber(std::string_view(view).substr(0, view.find('/')))) {
        return organisation.FindHolder("view:" + view);
    }
    return organisation.FindView(text.starts_with(kIdPrefix) ? "view:" + view : text);
}

Item FindPlace(CAConnect& conn, int type, const std::string& text)
{
    const Organisation organisation(conn);
    const ItemKey key = type == kItemTypeView ? FindViewOrBelow(organisation, text) : organisation.FindGroup(text);
    return {key, NameIn(organisation, key)};
}

Item FindAtPath(CAConnect& conn, const std::string& path)
{
    const Organisation organisation(conn);
    const ItemKey key = organisation.FindHolder(path);
    return {key, NameIn(organisation, key)};
}

Item FindOfKind(CAConnect& conn, int type, const std::string& text)
{
    if (type == kItemTypeUser) {
        Directory directory(conn);
        const UserKey user = FindUser(directory, text);
        return {{type, user.id}, user.login};
    }
    if (type == kItemTypeRole) {
        Roles roles(conn);
        const RoleKey role = FindRole(roles, text, {});
        return {{type, role.id}, role.name};
    }
    return FindPlace(conn, type, text);
}

} // namespace

Item FindItem(CAConnect& conn, const std::string& argument)
{
    if (argument.starts_with('/')) {
        return FindAtPath(conn, argument);
    }
    const Words words = Split(argument);
    if (words.kind == nullptr) {
        throw Error(ErrorCode::invalid, FillPattern("invalid item {}: expected {}", Quoted(argument), kItemHelp));
    }
    return FindOfKind(conn, words.kind->type, words.rest);
}

std::string NameCache::Load(ItemKey key)
{
    if (key.type == kItemTypeUser) {
        const std::optional<FieldValues> user = Directory(m_conn).Load(key.id);
        return user ? user->at(FindField("login")).value_or("") : "";
    }
    if (key.type == kItemTypeRole) {
        const std::optional<RoleData> role = Roles(m_conn).Load(key.id);
        return role ? role->name : "";
    }
    if (KindOf(key.type) == nullptr) {
        return "";
    }
    if (!m_organisation) {
        m_organisation.emplace(m_conn);
    }
    return NameIn(*m_organisation, key);
}

const std::string& NameCache::NameOf(ItemKey key)
{
    auto found = m_names.find(key);
    if (found == m_names.end()) {
        found = m_names.emplace(key, Load(key)).first;
    }
    return found->second;
}

std::string NameOf(CAConnect& conn, ItemKey key) { return NameCache(conn).NameOf(key); }

std::string TypeName(int type)
{
    const KindOfItem* kind = KindOf(type);
    return kind == nullptr ? std::to_string(type) : std::string(kind->noun);
}

Sentence Named(const Item& item)
{
    const std::string name = item.name.empty() ? "" : Visible(item.name) + " ";
    return FillPattern("{} {}(id {})", Sentence(TypeName(item.key.type)), name, item.key.id);
}

} // namespace management
