#include "bench/ServerData.h"

#include "bench/ByHand.h"
#include "bench/TestData.h"

namespace bench {

namespace {

// The numbers from 1 to `last`, as the column `name` of a table of that name and an s.
std::string Numbers(const std::string& name, int last)
{
    return name + "s(" + name + ") AS (SELECT 1 UNION ALL SELECT " + name + " + 1 FROM " + name + "s WHERE " + name +
           " < " + std::to_string(last) + ")";
}

std::string ParentsAndChildren()
{
    return "WITH RECURSIVE " + Numbers("p", Shelves::kParents) + ", " + Numbers("c", Shelves::kChildren) + " ";
}

} // namespace

void MakeShelves(const std::string& path)
{
    MakeDirectory(path, 0, 0);
    ByHand db(path);
    db.Run("BEGIN");
    const std::string folders = std::to_string(Shelves::kParents);
    // Children come round by round, so that those of one parent are all over the table.
    db.Run(("WITH RECURSIVE " + Numbers("p", Shelves::kParents * (Shelves::kChildren + 1)) +
            " INSERT INTO Tab_Doc_VFolder (Col_ID, Col_Name, Col_Dt_Create) SELECT p, 'Folder of letters ' || p, "
            "'2013-05-07 09:03:00' FROM ps")
               .c_str());
    db.Run((ParentsAndChildren() +
            "INSERT INTO Tab_Doc_VFolder_Link (Col_P_ObjID, Col_S_ClassID, Col_S_ObjID) SELECT p, 105, p + c * " +
            folders + " FROM cs, ps ORDER BY c, p")
               .c_str());
    db.Run(
        (ParentsAndChildren() +
         "INSERT INTO Kel_Board_Revert (Col_BoardID, Col_Creator_Name, Col_Dt_Create, Col_Content) SELECT '" +
         Shelves::kNotice +
         "' || p, 'Somebody ' || (c % 97), printf('2013-%02d-%02d %02d:%02d:%02d', 1 + c % 12, 1 + c % 28, c % 24, c "
         "% 60, p % 60), 'A reply of some forty characters, number ' || c FROM cs, ps ORDER BY c, p")
            .c_str());
    db.Run("COMMIT");
}

void MakeMail(const std::string& path, int messages)
{
    MakeDirectory(path, 0, messages);
    ByHand db(path);
    db.Run("BEGIN");
    db.Run("INSERT INTO kel_Msg_AttachMent (Col_MsgID) SELECT Col_ID FROM kel_Msg");
    for (int i = 0; i < Mail::kReceipts; ++i) {
        db.Run("INSERT INTO kel_Msg_Rece (Col_MsgID) SELECT Col_ID FROM kel_Msg");
    }
    db.Run("COMMIT");
}

} // namespace bench
