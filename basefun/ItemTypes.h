#pragma once

/// @file
/// Codes in the rows of relations, rights and views.

/// The item type of users.
inline constexpr int kItemTypeUser = 1;
/// The item type of groups.
inline constexpr int kItemTypeGroup = 2;
/// The item type of roles.
inline constexpr int kItemTypeRole = 3;
/// The item type of views.
inline constexpr int kItemTypeView = 4;

/// The relation type of membership.
inline constexpr int kMembership = 1;

/// Views of the whole system.
inline constexpr int kSystemView = 1;
