# Writes a header with a call for every static operation of CQVBaseFun that takes a connection, and for every operation
# of a record class. -D ROOT= -D HEADERS=a.h,b.h -D OUTPUT=
string(REPLACE "," ";" headers "${HEADERS}")
set(includes "")
set(operations "")
set(records "")

set(member "CString (m_[A-Za-z0-9_]+)")
file(READ ${ROOT}/documents/DocLink.h link)
string(REGEX MATCHALL "${member}" link_members "${link}")

foreach(header IN LISTS headers)
  file(READ ${header} text)
  file(RELATIVE_PATH name ${ROOT} ${header})
  string(REGEX REPLACE "\n *///?[^\n]*" "" text "${text}")
  string(REGEX REPLACE "[ \n]+" " " text "${text}")
  string(REGEX REPLACE " protected: .*" "" text "${text}")

  string(REGEX MATCHALL "static [a-z]+ [A-Za-z0-9_]+\\(CAConnect& conn[^)]*\\)" declared "${text}")
  foreach(declaration IN LISTS declared)
    string(REGEX MATCH "^static ([a-z]+) ([A-Za-z0-9_]+)\\((.*)\\)$" all "${declaration}")
    set(parameters "${CMAKE_MATCH_3}")
    string(APPEND operations "        Operation(\"${CMAKE_MATCH_2}\", \"${parameters}\", "
           "static_cast<${CMAKE_MATCH_1} (*)(${parameters})>(&CQVBaseFun::${CMAKE_MATCH_2})),\n")
  endforeach()

  string(REGEX MATCHALL "(bool|int) [A-Za-z0-9_]+\\(CAConnect& conn\\)" declared "${text}")
  if(declared AND text MATCHES "class (QV_API )?(C[A-Za-z]+) : public CObject(, public DocLink)?")
    set(class ${CMAKE_MATCH_2})
    set(base "${CMAKE_MATCH_3}")
    string(APPEND includes "#include \"${name}\"\n")
    string(REGEX MATCHALL "${member}" members "${text}")
    if(base)
      list(APPEND members ${link_members})
    endif()
    foreach(declaration IN LISTS declared)
      string(REGEX MATCH " ([A-Za-z0-9_]+)\\(" all "${declaration}")
      string(APPEND records "        RecordOperation(\"${class}\", \"${CMAKE_MATCH_1}\", &${class}::${CMAKE_MATCH_1}, {")
      foreach(text_member IN LISTS members)
        string(REGEX REPLACE "CString " "" text_member "${text_member}")
        string(APPEND records "{\"${text_member}\", &${class}::${text_member}}, ")
      endforeach()
      string(APPEND records "}),\n")
    endforeach()
  endif()
endforeach()

file(WRITE ${OUTPUT}.new "#pragma once

#include \"tests/escaping/TextCall.h\"
${includes}
namespace escaping {

inline std::vector<TextCall> DeclaredCalls()
{
    return {
${operations}${records}    };
}

} // namespace escaping
")
file(COPY_FILE ${OUTPUT}.new ${OUTPUT} ONLY_IF_DIFFERENT)
