#include "schema/Snapshot.h"

#include "dbaccess/CAConnect.h"
#include "schema/Dialect.h"

#include <string>
#include <vector>

namespace schema {

Snapshot::Snapshot(CAConnect& conn) : m_conn(conn)
{
    for (const std::string& statement : DialectOf(conn).copying.beginReading) {
        conn.Execute(statement.c_str());
        m_isOpen = true;
    }
}

Snapshot::~Snapshot()
{
    try {
        if (m_isOpen) {
            m_conn.Execute("ROLLBACK");
            for (const std::string& statement : DialectOf(m_conn).copying.endReading) {
                m_conn.Execute(statement.c_str());
            }
        }
    } catch (...) { // it has been read, and goes with its connection
    }
}

} // namespace schema
