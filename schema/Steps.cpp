#include "schema/Steps.h"

#include "schema/StatementSplitter.h"

namespace schema {

std::vector<Step> StepsOf(const StepTexts& texts)
{
    return {{"tables", SplitStatements(texts.tables)},
            {"indexes", SplitStatements(texts.indexes)},
            {"names", {}, texts.namesOf},
            {"audit", SplitStatements(texts.audit), texts.namesOf},
            {"console", SplitStatements(texts.console), texts.namesOf}};
}

} // namespace schema
