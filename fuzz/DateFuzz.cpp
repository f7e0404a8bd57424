// A text that passes for a date is one: its literal holds the same digits and nothing that could end it early.

#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "fuzz/Fuzz.h"
#include "platform/COleDateTime.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static CAConnect conn;
    if (!conn.IsOpen()) {
        conn.Open("sqlite::memory:");
    }
    const std::string_view text = fuzz::Text(data, size);
    try {
        const CString literal = conn.GetDateStrOnSQL(CString(text));
        std::string expected = "'" + std::string(text);
        expected += text.size() == 10 ? " 00:00:00'" : "'";
        fuzz::Require(literal.View() == expected, "the literal is the text between quotes");
        int year = 0;
        int month = 0;
        int day = 0;
        fuzz::Require(std::sscanf(literal, "'%d-%d-%d", &year, &month, &day) == 3, "the literal holds a date");
        if (year >= 100) {
            fuzz::Require(COleDateTime(year, month, day, 0, 0, 0).GetStatus() == COleDateTime::valid,
                          "the date is real");
        }
    } catch (const CAException&) {
        fuzz::Require(text != "2013-05-07", "a date passes");
    }
    return 0;
}
