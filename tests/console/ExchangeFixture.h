#pragma once

#include "ConsoleOnEngine.h"

#include <fmt/format.h>

#include <string>
#include <vector>

inline constexpr const char* kHead = "{\"format\":\"qvadmin directory\",\"version\":1}\n";

/// A directory with something of everything.
class ExchangeFixture : public ConsoleOnEngine {
protected:
    /// Something of everything, with names that are hard to write down.
    void Fill()
    {
        Done({"user", "create", "amy", "--name", "Amélia \"Pond\"", "--note", "first\nsecond\r\nthird", "--birthday",
              "1989-11-28"});
        Done({"user", "create", "O'Neil", "--super", "--description", "\xF0\x9F\x98\x80 \\ ' \" % _"});
        Done({"user", "create", "back\\slash", "--system", "--sort-index", "7"});
        Done({"user", "create", "\xC3\x9Cml\xC3\xA4ut"});
        WriteSecretFile("secret", "a long password");
        Done({"user", "password", "set", "amy", "--password-file", Path("secret")});
        Done({"view", "create", "Company", "--description", "O'Brien's\nview"});
        Done({"view", "create", "Other / \\ view"});
        Done({"group", "create", "/Company/Sales"});
        Done({"group", "create", "/Company/Service", "--sort-index", "3"});
        Done({"group", "create", "/Company/Sales/North"});
        Done({"group", "create", "/Company/Service/North"});
        Done({"group", "create", "/Other \\/ \\\\ view/A\\/B 'c' \xF0\x9F\x98\x80"});
        Done({"member", "add", "/Company/Sales", "amy", "O'Neil"});
        Done({"member", "add", "/Company/Service/North", "back\\slash"});
        Done({"user", "set", "amy", "--department", "/Company/Sales/North"});
        Done({"role", "default", "--create"});
        Done({"role", "create", "Editors", "--description", "\\ and '"});
        Done({"role", "add", "Editors", "amy"});
        Done({"title", "give", "/Company/Sales", "amy", "Lead's \\ title"});
        Done({"right", "grant", "role:Editors", "mail", "send", "1"});
        Done({"right", "grant", "user:amy", "pages", "edit", "0x1F", "--unpower", "2"});
        Done({"right", "on", "grant", "role:Editors", "view:Company", "pages", "see"});
        Done({"docroot", "create", "Main", "--path", "C:\\documents", "--type", "1"});
        Done({"folder", "create", "/Main/Contracts", "--creator", "amy"});
        Done({"folder", "create", "/Main/Contracts/2024"});
        Done({"folder", "create", "/Main/Other"});
        Done({"folder", "link", "/Main/Contracts/2024", "/Main/Other"});
        Done({"objright", "grant", "user:amy", "3", "17", "documents", "read", "1"});
        Done({"objright", "grant", "role:Editors", "105", "2", "documents", "read", "1"});
        Done({"plan", "create", "Nightly", "--data", "line\nline"});
        Done({"plan", "assign", "Nightly", "group:/Company/Sales"});
        Done({"setting", "set", "Banner", "it's \\ \xE2\x82\xAC", "--genre", "Console"});
        Done({"package", "install", "Office", "--version", "3"});
        WriteFile("data.xml", "<a b='c'>\n</a>\n");
        Done({"addin", "create", "Calendar", "--type", "2", "--data-file", Path("data.xml"), "--package", "Office"});
        // What no command makes.
        Execute("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, Col_RelType, "
                "Col_Ref, Col_ViewID) VALUES (2, 2, 4, 2, 1, 0, 0)");
        Execute("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, Col_RelType, "
                "Col_Ref, Col_ViewID) VALUES (3, 2, 2, 1, 7, 5, 1)");
        Execute("INSERT INTO qv_Group (Col_Name) VALUES ('hangs nowhere')");
        Execute("INSERT INTO qv_Group (Col_Name) VALUES ('hangs nowhere')");
        Execute("INSERT INTO qv_View (Col_Name, Col_Type, Col_OwnerID) VALUES ('Friends', 2, 1)");
        Execute("INSERT INTO qv_View (Col_Name, Col_Type, Col_OwnerID) VALUES ('Friends', 2, 2)");
        Execute("INSERT INTO qv_Role (Col_Name, Col_AppName, Col_DomainID) VALUES ('Editors', 'Other', 4)");
        Execute("INSERT INTO Kel_Board (Col_ID, Col_Creator_Name, Col_Subject, Col_Dt_Create, Col_Content) VALUES "
                "('n-1', 'amy', 'Moved', '2024-05-07 09:03:00', 'all of it')");
        Execute("INSERT INTO Kel_Board_Attach (Col_BoardID, Col_FileName) VALUES ('n-1', 'map.png')");
        Execute(
            "INSERT INTO Kel_Board_Revert (Col_BoardID, Col_Creator_Name, Col_Content) VALUES ('n-1', 'rory', 'ok')");
        Execute("INSERT INTO Kel_Board_Visiter (Col_BoardID, Col_QvItem, Col_Readed) VALUES ('n-1', '1,2', 1)");
    }

    std::string Export(const std::string& file, const std::vector<std::string>& options = {})
    {
        Done(With({"export", Path(file)}, options));
        return ReadFile(file);
    }

    ChildResult Import(const std::string& text, const std::vector<std::string>& options = {})
    {
        WriteFile("in.jsonl", text);
        return Run(With({"import", Path("in.jsonl")}, options));
    }

    /// Goes on with a new and empty directory. @param engine  empty: the same one.
    void StartAnew(std::string engine = {})
    {
        engine = engine.empty() ? GetParam() : engine;
        ++m_directories;
        m_options.environment["QVADMIN_DB"] = engine == "sqlite"
                                                  ? "sqlite:" + Path(fmt::format("directory{}.db", m_directories))
                                                  : servers::NewDatabase(engine);
        Init();
    }

private:
    int m_directories = 0;
};
