// Shows the organisation of a directory as a tree: list_organisation sqlite:/var/lib/quorvel/directory.db?mode=ro
#include "basefun/ItemTypes.h"
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"

#include <iostream>
#include <set>
#include <stdexcept>
#include <string>

namespace {

// Operations report by value; this makes a failure end the program.
void Require(bool ran)
{
    if (!ran) {
        throw std::runtime_error(CQVBaseFun::m_strLastError.GetString());
    }
}

// Shows the groups and users directly under an item, and what is below them. The library does not keep cycles of groups
// out of a directory, so `above` holds the groups on the way down.
void Show(CAConnect& conn, int holderId, int holderType, const std::string& indent, std::set<int>& above)
{
    CUIntArray groups;
    CStringArray groupNames;
    Require(CQVBaseFun::LoadGroup(conn, holderId, holderType, groups, groupNames));
    for (int i = 0; i < groups.GetSize(); ++i) {
        const int group = static_cast<int>(groups[i]);
        std::cout << indent << groupNames[i].GetString() << '\n';
        if (above.insert(group).second) {
            Show(conn, group, kItemTypeGroup, indent + "    ", above);
            above.erase(group);
        }
    }
    CUIntArray users;
    CStringArray userNames;
    Require(CQVBaseFun::LoadUsers(conn, holderId, holderType, users, userNames));
    for (const CString& name : userNames) {
        std::cout << indent << "- " << name.GetString() << '\n';
    }
}

void ShowAll(CAConnect& conn)
{
    constexpr int kSystemView = 1;
    CUIntArray views;
    CStringArray names;
    Require(CQVBaseFun::LoadView(conn, views, names, kSystemView));
    for (int i = 0; i < views.GetSize(); ++i) {
        std::set<int> above;
        std::cout << '/' << names[i].GetString() << '\n';
        Show(conn, static_cast<int>(views[i]), kItemTypeView, "    ", above);
    }
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 2) {
        std::cerr << "usage: list_organisation URL\n";
        return 2;
    }
    CAConnect conn;
    try {
        conn.Open(argv[1]);
        ShowAll(conn);
    } catch (const CAException& e) {
        std::cerr << e.GetErrorText().GetString() << '\n';
        return 1;
    } catch (const std::runtime_error& e) {
        std::cerr << e.what() << '\n';
        return 1;
    }
    return 0;
}
