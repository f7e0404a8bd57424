#include "management/organisation/Organisation.h"

#include "RefusalOf.h"
#include "basefun/ItemTypes.h"
#include "console/ExitCode.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "schema/Schema.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

using namespace console;
using namespace management;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

ItemKey View(int id) { return {kItemTypeView, id}; }
ItemKey Group(int id) { return {kItemTypeGroup, id}; }
ItemKey User(int id) { return {kItemTypeUser, id}; }

class OrganisationTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
    }

    [[nodiscard]] Organisation Now() { return Organisation(m_conn); }

    ItemKey AddView(const std::string& name, int type = 1)
    {
        ViewData view;
        view.name = name;
        view.type = type;
        return View(Now().CreateView(view));
    }

    ItemKey AddGroup(ItemKey parent, const std::string& name)
    {
        GroupData group;
        group.name = name;
        return Group(Now().CreateGroup(parent, group));
    }

    void Link(ItemKey holder, ItemKey member) { Now().AddMember(holder, member); }

    ItemKey AddUser(const std::string& login)
    {
        Directory directory(m_conn);
        directory.Insert(login, "name of " + login);
        return User(directory.FindId(login).value());
    }

    int Number(const std::string& sql)
    {
        int number = -1;
        CARecordset rs;
        rs.Open(sql.c_str(), &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
        rs.GetValue(1, number);
        return number;
    }

    CAConnect m_conn;
};

const std::vector<std::string> kHardNames = {"O'Brien", "a\\b", "a/b", "\\",   "/",      "''",    "%s%d", "x\\/y",
                                             "\\\\'",   "Żółw", "王",  "id:1", "view:2", "a; --", "{}"};

} // namespace

// ---- Paths ----------------------------------------------------------------------------------------------------------

TEST(PathTest, APathIsSplitAtItsBareSlashes)
{
    EXPECT_THAT(SplitPath("/a"), ElementsAre("a"));
    EXPECT_THAT(SplitPath("/a/b c/d"), ElementsAre("a", "b c", "d"));
    EXPECT_THAT(SplitPath("/a\\/b/c\\\\"), ElementsAre("a/b", "c\\"));
}

TEST(PathTest, WhatIsNoPathIsRefused)
{
    for (const char* path : {"", "a", "a/b", "/", "//", "/a/", "/a//b", "/a\\b", "/a\\", "id:1"}) {
        EXPECT_EQ(CodeOf([&] { SplitPath(path); }), Exit::usage) << path;
    }
}

TEST(PathTest, EveryNameComesBackFromItsPath)
{
    for (const std::string& name : kHardNames) {
        EXPECT_THAT(SplitPath("/" + PathEscaped(name)), ElementsAre(name));
        const ParentAndName parts = SplitLast("/V\\/W/" + PathEscaped(name));
        EXPECT_EQ(parts.parent, "/V\\/W");
        EXPECT_EQ(parts.name, name);
    }
}

TEST(PathTest, TheLastNameComesOffAPathThatHasOne)
{
    EXPECT_EQ(SplitLast("id:17/x").parent, "id:17");
    EXPECT_EQ(SplitLast("view:4/x/y").parent, "view:4/x");
    for (const char* path : {"", "x", "x/y", "/x", "/a\\/b", "id:17", "/"}) {
        EXPECT_EQ(CodeOf([&] { SplitLast(path); }), Exit::usage) << path;
    }
}

TEST(NameTest, NamesThatNobodyCouldTypeAreRefused)
{
    for (const char* name : {"", " a", "a ", "a\xC2\xA0", "a\nb", "\x1B"}) {
        EXPECT_EQ(CodeOf([&] { CheckName("group", name); }), Exit::usage) << name;
    }
    for (const std::string& name : kHardNames) {
        EXPECT_NO_THROW(CheckName("group", name));
    }
}

// ---- Look-ups -------------------------------------------------------------------------------------------------------

TEST_F(OrganisationTest, EveryNameComesThroughAndIsFoundByItsPath)
{
    for (const std::string& name : kHardNames) {
        const ItemKey view = AddView(name);
        const ItemKey group = AddGroup(view, name);
        const ItemKey below = AddGroup(group, name);
        Organisation organisation = Now();
        EXPECT_EQ(organisation.Find(view)->name, name);
        EXPECT_EQ(organisation.LoadGroup(group.id)->name, name);
        EXPECT_EQ(organisation.PathOf(below), fmt::format("/{0}/{0}/{0}", PathEscaped(name)));
        for (const ItemKey key : {view, group, below}) {
            EXPECT_EQ(organisation.FindHolder(organisation.PathOf(key)), key) << name;
        }
        EXPECT_THAT(organisation.SystemViewsNamed(name), ElementsAre(view));
    }
}

TEST_F(OrganisationTest, CaseDoesNotCountInAPath)
{
    const ItemKey group = AddGroup(AddView("Société"), "Żółw");
    EXPECT_EQ(Now().FindGroup("/SOCIÉTÉ/żÓŁW"), group);
    EXPECT_EQ(Now().FindView("sOCIÉTÉ"), View(1));
}

TEST_F(OrganisationTest, AnItemIsFoundById)
{
    const ItemKey view = AddView("V");
    const ItemKey group = AddGroup(view, "G");
    const ItemKey below = AddGroup(group, "H");
    const Organisation organisation = Now();
    EXPECT_EQ(organisation.FindHolder("view:1"), view);
    EXPECT_EQ(organisation.FindGroup("id:1"), group);
    EXPECT_EQ(organisation.FindGroup("id:1/h"), below);
    EXPECT_EQ(organisation.FindGroup("view:1/g/h"), below);
    for (const char* argument : {"id:9", "view:9", "id:1/x", "view:9/g"}) {
        EXPECT_EQ(CodeOf([&] { static_cast<void>(organisation.FindHolder(argument)); }), Exit::notFound) << argument;
    }
    for (const char* argument : {"id:", "id:x", "view:1x", "id:1/", "G"}) {
        EXPECT_EQ(CodeOf([&] { static_cast<void>(organisation.FindHolder(argument)); }), Exit::usage) << argument;
    }
    EXPECT_EQ(CodeOf([&] { static_cast<void>(organisation.FindGroup("/V")); }), Exit::usage);
    EXPECT_EQ(CodeOf([&] { static_cast<void>(organisation.FindView("/V/G")); }), Exit::usage);
}

TEST_F(OrganisationTest, SeveralMatchesAreListedWithTheirIds)
{
    const ItemKey first = AddView("V");
    const ItemKey second = AddView("v");
    AddGroup(first, "G");
    AddGroup(second, "g");
    const Organisation organisation = Now();
    EXPECT_THAT(organisation.FindAll("/V/G"), UnorderedElementsAre(Group(1), Group(2)));
    const auto [code, sentence] = RefusalOf([&] { static_cast<void>(organisation.FindGroup("/V/G")); });
    EXPECT_EQ(code, Exit::conflict);
    EXPECT_THAT(sentence, testing::AllOf(HasSubstr("/V/G (id 1)"), HasSubstr("/v/g (id 2)"), HasSubstr("write id:1")));
    EXPECT_EQ(CodeOf([&] { static_cast<void>(organisation.FindView("V")); }), Exit::conflict);
    EXPECT_EQ(organisation.FindGroup("view:2/G"), Group(2));
}

TEST_F(OrganisationTest, AGroupInTwoPlacesIsOneMatch)
{
    const ItemKey view = AddView("V");
    const ItemKey a = AddGroup(view, "A");
    const ItemKey b = AddGroup(view, "a");
    const ItemKey shared = AddGroup(a, "S");
    Link(b, shared);
    Link(b, shared);
    EXPECT_THAT(Now().FindAll("/V/A/S"), ElementsAre(shared));
    EXPECT_EQ(Now().Find(shared)->parents.size(), 2U);
}

TEST_F(OrganisationTest, PathsByNameBeginAtSystemViewsOnly)
{
    const ItemKey own = AddView("Mine", 7);
    const ItemKey group = AddGroup(own, "G");
    const Organisation organisation = Now();
    EXPECT_THAT(organisation.FindAll("/Mine"), IsEmpty());
    EXPECT_EQ(organisation.PathOf(group), "view:1/G");
    EXPECT_EQ(organisation.FindGroup("view:1/G"), group);
    EXPECT_TRUE(organisation.Find(group)->isReachable);
}

TEST_F(OrganisationTest, ThePathInASystemViewIsPreferredAndTheShortest)
{
    const ItemKey own = AddView("Mine", 7);
    const ItemKey view = AddView("V");
    const ItemKey deep = AddGroup(AddGroup(view, "A"), "S");
    Link(own, deep);
    EXPECT_EQ(Now().PathOf(deep), "/V/A/S");
    Link(view, deep);
    EXPECT_EQ(Now().PathOf(deep), "/V/S");
}

TEST_F(OrganisationTest, WhatHangsNowhereIsNamedById)
{
    const ItemKey lost = AddGroup(View(99), "Lost");
    const ItemKey below = AddGroup(lost, "Below");
    const Organisation organisation = Now();
    EXPECT_FALSE(organisation.Find(below)->isReachable);
    EXPECT_EQ(organisation.PathOf(lost), "id:1");
    EXPECT_EQ(organisation.PathOf(below), "id:1/Below");
    EXPECT_EQ(organisation.Named(lost), "Lost (id 1)");
    EXPECT_EQ(organisation.PathOf(Group(99)), "id:99");
}

TEST_F(OrganisationTest, ChildrenStandInTheirOrder)
{
    const ItemKey view = AddView("V");
    const ItemKey z = AddGroup(view, "z");
    const ItemKey b = AddGroup(view, "B");
    const ItemKey a = AddGroup(view, "a");
    Now().ChangeGroup(z.id, {{}, {}, 1, {}});
    const Organisation organisation = Now();
    std::vector<ItemKey> children;
    for (const std::size_t child : organisation.Find(view)->children) {
        children.push_back(organisation.Nodes()[child].key);
    }
    EXPECT_THAT(children, ElementsAre(z, a, b));
}

TEST_F(OrganisationTest, UsersAreCountedOncePerGroup)
{
    const ItemKey view = AddView("V");
    const ItemKey a = AddGroup(view, "A");
    const ItemKey b = AddGroup(a, "B");
    const ItemKey amy = AddUser("amy");
    const ItemKey rory = AddUser("rory");
    for (const auto& [holder, user] : {std::pair(view, amy), std::pair(a, amy), std::pair(a, amy), std::pair(b, amy),
                                       std::pair(b, rory), std::pair(b, User(99))}) {
        Link(holder, user);
    }
    m_conn.Execute("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, "
                   "Col_RelType) VALUES (1, 2, 2, 1, 5)");
    Organisation organisation = Now();
    EXPECT_EQ(organisation.Find(view)->users, 1);
    EXPECT_EQ(organisation.Find(a)->users, 1);
    EXPECT_EQ(organisation.Find(b)->users, 2);
    EXPECT_EQ(organisation.UsersBelow(view), 3);
    EXPECT_EQ(organisation.UsersBelow(b), 0);
    std::map<ItemKey, std::vector<Member>> members = organisation.LoadMembers();
    ASSERT_EQ(members[b].size(), 2U);
    EXPECT_EQ(members[b][1].login, "rory");
    EXPECT_EQ(members[b][1].name, "name of rory");
    EXPECT_EQ(members[a].size(), 1U);
}

TEST_F(OrganisationTest, ACycleIsFoundAndNamed)
{
    const ItemKey view = AddView("V");
    const ItemKey b = AddGroup(view, "B");
    const ItemKey c = AddGroup(b, "C");
    const ItemKey d = AddGroup(c, "D");
    EXPECT_THAT(Now().FindCycle(view), IsEmpty());
    EXPECT_EQ(Now().CycleText(Now().CycleClosedBy(c, b)), "/V/B -> /V/B/C -> /V/B");
    EXPECT_EQ(Now().CycleText(Now().CycleClosedBy(b, b)), "/V/B -> /V/B");
    EXPECT_THAT(Now().CycleClosedBy(b, d), IsEmpty());
    EXPECT_THAT(Now().CycleClosedBy(view, d), IsEmpty());
    Link(d, c);
    EXPECT_THAT(Now().FindCycle(view), ElementsAre(c, d, c));
    EXPECT_THAT(Now().FindCycle(d), ElementsAre(d, c, d));
    EXPECT_THAT(Now().Below(d), UnorderedElementsAre(c, d));
}

TEST_F(OrganisationTest, AGroupInTwoPlacesIsNoCycle)
{
    const ItemKey view = AddView("V");
    const ItemKey a = AddGroup(view, "A");
    const ItemKey b = AddGroup(view, "B");
    const ItemKey shared = AddGroup(a, "S");
    Link(b, shared);
    EXPECT_THAT(Now().FindCycle(view), IsEmpty());
    EXPECT_THAT(Now().CycleClosedBy(b, a), IsEmpty());
}

TEST_F(OrganisationTest, GroupsOnACycleThatNoViewLeadsToHaveAPathToo)
{
    const ItemKey a = AddGroup(Group(2), "A");
    const ItemKey b = AddGroup(a, "B");
    Link(b, a);
    const Organisation organisation = Now();
    EXPECT_EQ(organisation.PathOf(a), "id:1");
    EXPECT_EQ(organisation.PathOf(b), "id:1/B");
    EXPECT_EQ(organisation.FindGroup("id:1/B/A/B"), b);
}

TEST_F(OrganisationTest, WhatHangsElsewhereTooStaysWhenAGroupGoes)
{
    const ItemKey view = AddView("V");
    const ItemKey a = AddGroup(view, "A");
    const ItemKey b = AddGroup(a, "B");
    const ItemKey shared = AddGroup(b, "S");
    const ItemKey belowShared = AddGroup(shared, "T");
    const ItemKey other = AddGroup(view, "O");
    Link(other, shared);
    EXPECT_THAT(Now().OrphanedBy(a), ElementsAre(a, b));
    EXPECT_THAT(Now().OrphanedBy(shared), ElementsAre(shared, belowShared));
    Link(b, a);
    EXPECT_THAT(Now().OrphanedBy(a), ElementsAre(a, b));
}

TEST_F(OrganisationTest, AVeryLongChainIsNoTrouble)
{
    constexpr int kLength = 20000;
    const ItemKey view = AddView("V");
    m_conn.BeginTrans();
    for (int id = 1; id <= kLength; ++id) {
        m_conn.Execute(fmt::format("INSERT INTO qv_Group (Col_ID, Col_Name) VALUES ({0}, 'G{0}')", id).c_str());
        m_conn.Execute(fmt::format("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, "
                                   "Col_DQvItemType) VALUES ({}, {}, {}, 2)",
                                   id == 1 ? 1 : id - 1, id == 1 ? 4 : 2, id)
                           .c_str());
    }
    m_conn.CommitTrans();
    Organisation organisation = Now();
    EXPECT_EQ(organisation.Below(view).size(), std::size_t{kLength});
    EXPECT_THAT(organisation.FindCycle(view), IsEmpty());
    EXPECT_EQ(organisation.CycleClosedBy(Group(kLength), Group(1)).size(), std::size_t{kLength} + 1);
    EXPECT_EQ(organisation.OrphanedBy(Group(1)).size(), std::size_t{kLength});
}

// ---- Writes ---------------------------------------------------------------------------------------------------------

TEST_F(OrganisationTest, ANewGroupHasWhatIsGivenAndItsOwnId)
{
    const ItemKey view = AddView("V");
    for (const std::string& text : kHardNames) {
        GroupData group{text, text + "'", text + "\\", {}, 3, 4, 5};
        const int id = Now().CreateGroup(view, group);
        GroupData stored = Now().LoadGroup(id).value();
        EXPECT_EQ(stored.created.value().size(), std::string("2000-01-01").size());
        stored.created.reset();
        EXPECT_EQ(stored, group);
        EXPECT_EQ(Now().Find(Group(id))->parents.size(), 1U);
    }
}

TEST_F(OrganisationTest, ChangesTouchOneRowAndWhatTheyAreFor)
{
    const ItemKey view = AddView("V");
    const ItemKey other = AddGroup(view, "other");
    const ItemKey group = AddGroup(view, "G");
    const GroupData untouched = Now().LoadGroup(other.id).value();
    GroupData expected = Now().LoadGroup(group.id).value();
    for (const std::string& text : kHardNames) {
        Now().ChangeGroup(group.id, {{}, expected.description = text, {}, {}});
        EXPECT_EQ(Now().LoadGroup(group.id), expected);
        Now().ChangeGroup(group.id, {{}, {}, expected.sortIndex += 1, expected.domainId += 2});
        EXPECT_EQ(Now().LoadGroup(group.id), expected);
        Now().ChangeGroup(group.id, {expected.name = text, {}, {}, {}});
        EXPECT_EQ(Now().LoadGroup(group.id), expected);
        Now().SetGroupStyle(group.id, expected.style += 1);
        EXPECT_EQ(Now().LoadGroup(group.id), expected);
        EXPECT_EQ(Now().GroupStyle(group.id), expected.style);
    }
    EXPECT_EQ(Now().LoadGroup(other.id), untouched);
    EXPECT_EQ(Now().LoadGroup(99), std::nullopt);
}

TEST_F(OrganisationTest, AViewIsMadeAndChanged)
{
    for (const std::string& text : kHardNames) {
        ViewData view{text, text + "'", text, {}, 1, 2, 3, 4, 5, true};
        const int id = Now().CreateView(view);
        view.created = Now().LoadView(id).value().created;
        EXPECT_EQ(Now().LoadView(id), view);
        Now().ChangeView(id, {view.description = text + text, {}});
        EXPECT_EQ(Now().LoadView(id), view);
        Now().ChangeView(id, {{}, view.sortIndex = 9});
        EXPECT_EQ(Now().LoadView(id), view);
        Now().RenameView(id, view.name = "~" + text);
        EXPECT_EQ(Now().LoadView(id), view);
    }
}

TEST_F(OrganisationTest, TheDefaultViewIsNamedOnce)
{
    EXPECT_EQ(Now().DefaultViewName(), "");
    AddView("_Empty");
    EXPECT_EQ(Now().DefaultViewName(), "_Empty");
    Now().NameDefaultView("O'Brien\\");
    EXPECT_EQ(Now().DefaultViewName(), "O'Brien\\");
    Now().NameDefaultView("x");
    EXPECT_EQ(Now().DefaultViewName(), "O'Brien\\");
}

TEST_F(OrganisationTest, AMembershipBeginsAndEnds)
{
    const ItemKey view = AddView("V");
    const ItemKey group = AddGroup(view, "G");
    const ItemKey amy = AddUser("amy");
    Link(group, amy);
    EXPECT_EQ(Now().Find(group)->users, 1);
    Now().RemoveMember(group, amy);
    EXPECT_EQ(Now().Find(group)->users, 0);
    Now().RemoveMember(view, group);
    EXPECT_FALSE(Now().Find(group)->isReachable);
}

TEST_F(OrganisationTest, StampingReachesTheUsersOfEveryGroupBelow)
{
    const ItemKey view = AddView("V");
    const ItemKey a = AddGroup(view, "A");
    const ItemKey b = AddGroup(a, "B");
    const ItemKey elsewhere = AddGroup(AddView("W"), "C");
    const ItemKey amy = AddUser("amy");
    for (const ItemKey holder : {view, a, b, elsewhere}) {
        Link(holder, amy);
    }
    Now().StampView(view.id);
    EXPECT_EQ(Number("SELECT COUNT(*) FROM qv_Relation WHERE Col_ViewID = 1 AND Col_DQvItemType = 1"), 3);
    EXPECT_EQ(Number("SELECT COUNT(*) FROM qv_Relation WHERE Col_ViewID <> 0"), 3);
}

TEST_F(OrganisationTest, DeletingTakesAllTracesAlongAndNoOthers)
{
    const char* const kTraces[] = {
        "INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES ({0}, {1}, 50, "
        "1)",
        "INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES (50, 3, {0}, "
        "{1})",
        "INSERT INTO qv_JobTitle (Col_QvItemID, Col_QvItemType, Col_DQvItemID) VALUES ({0}, {1}, 50)",
        "INSERT INTO qv_JobTitle (Col_QvItemID, Col_DQvItemID, Col_DQvItemType) VALUES (50, {0}, {1})",
        "INSERT INTO qv_ItemAce (Col_QvItemID, Col_QvItemType) VALUES ({0}, {1})",
        "INSERT INTO qv_BIIAce (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES ({0}, {1}, 50, 1)",
        "INSERT INTO qv_BIIAce (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES (50, 1, {0}, {1})",
        "INSERT INTO Tab_BIOAce (Col_QvItemID, Col_QvItemType) VALUES ({0}, {1})",
        "INSERT INTO Tab_Doc_Backup_Rel (Col_QvItem_ID, Col_QvItem_Type) VALUES ({0}, {1})"};
    const int traces = static_cast<int>(std::size(kTraces));
    m_conn.Execute("INSERT INTO qv_Group (Col_ID, Col_Name) VALUES (1, 'A'), (2, 'B'), (3, 'C')");
    m_conn.Execute("INSERT INTO qv_View (Col_ID, Col_Name) VALUES (1, 'V'), (2, 'W')");
    const ItemKey kItems[] = {Group(1), Group(2), Group(3), User(1), View(1), View(2)};
    for (const char* trace : kTraces) {
        for (const ItemKey item : kItems) {
            m_conn.Execute(fmt::format(fmt::runtime(trace), item.id, item.type).c_str());
        }
    }
    const auto total = [this](int type, const std::vector<int>& ids) {
        int count = 0;
        for (const Reference& trace : Now().References(type, ids)) {
            count += trace.count;
        }
        return count;
    };
    EXPECT_EQ(total(kItemTypeGroup, {1, 2}), 2 * traces);
    Now().DeleteGroups({1, 2});
    EXPECT_EQ(total(kItemTypeGroup, {1, 2}), 0);
    EXPECT_EQ(total(kItemTypeGroup, {3}), traces);
    Now().DeleteView(2);
    EXPECT_EQ(total(kItemTypeView, {2}), 0);
    EXPECT_EQ(total(kItemTypeView, {1}), traces);
    EXPECT_EQ(total(kItemTypeUser, {1}), traces);
    EXPECT_EQ(Now().Nodes().size(), 2U);
}

TEST_F(OrganisationTest, TextsWithNulAreRefused)
{
    const ItemKey view = AddView("V");
    const std::string text("a\0b", 3);
    EXPECT_EQ(CodeOf([&] { AddGroup(view, text); }), Exit::failed);
    EXPECT_EQ(CodeOf([&] { Now().RenameView(1, text); }), Exit::failed);
    EXPECT_EQ(Now().Nodes().size(), 1U);
}

TEST_F(OrganisationTest, WhatTheEngineRefusesIsTold)
{
    const ItemKey view = AddView("V");
    Organisation organisation = Now();
    m_conn.Execute("ALTER TABLE qv_Group RENAME TO qv_Gone");
    EXPECT_EQ(CodeOf([&] { static_cast<void>(Now()); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { organisation.CreateGroup(view, {}); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { organisation.ChangeGroup(1, {"a", {}, {}, {}}); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { organisation.DeleteGroups({1}); }), Exit::database);
    m_conn.Execute("ALTER TABLE qv_Relation RENAME TO qv_Gone2");
    EXPECT_EQ(CodeOf([&] { organisation.StampView(1); }), Exit::database);
}
