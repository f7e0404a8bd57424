#pragma once

// Codes that relations and rights rows hold.

inline constexpr int kItemTypeUser = 1;
inline constexpr int kItemTypeGroup = 2;
inline constexpr int kItemTypeRole = 3;
inline constexpr int kItemTypeView = 4;

/// The relation type of membership.
inline constexpr int kMembership = 1;

/// Views of the whole system.
inline constexpr int kSystemView = 1;

/// The engine kind on which names are compared through upper().
inline constexpr int kComparesInCapitals = 3;
