// Copies a directory to another engine, ids included:
// move_between_engines sqlite:/var/lib/quorvel/directory.db postgresql://quorvel@db1/directory
#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "schema/Copy.h"
#include "schema/Schema.h"

#include <iostream>

int main(int argc, char* argv[])
{
    if (argc != 3) {
        std::cerr << "usage: move_between_engines FROM TO\n";
        return 2;
    }
    CAConnect from;
    CAConnect to;
    try {
        from.Open(argv[1]);
        to.Open(argv[2]);
        if (schema::Inspect(from).state != schema::State::current) {
            std::cerr << "FROM is not a directory of this version; qvadmin db init upgrades it\n";
            return 1;
        }
        // Makes the tables of an empty database. One that has them stays as it is.
        schema::Upgrade(to, [](int version, const std::string& title) {
            std::cout << "step " << version << ": " << title << '\n';
        });
        // One transaction: TO holds all rows afterwards or none.
        const schema::Copied copied = schema::Copy(from, to, [](const schema::CopyState& state) {
            if (state.tableIsDone) {
                std::cout << state.table << ": " << state.tableRows << " rows\n";
            }
            return true; // false stops the copy
        });
        std::cout << "copied " << copied.rows << " rows of " << copied.tables << " tables\n";
    } catch (const CAException& e) {
        // CopyConflict when TO is not empty, RowRefused when it cannot hold a row as it is.
        std::cerr << e.GetErrorText().GetString() << '\n';
        return 1;
    }
    return 0;
}
