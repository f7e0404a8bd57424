#include "management/References.h"

#include "management/Text.h"

namespace management {

std::string WithReferences(const std::vector<Reference>& references)
{
    std::string list;
    for (const Reference& reference : references) {
        list += (list.empty() ? ", with " : ", ") + Counted(static_cast<std::size_t>(reference.count), reference.noun);
    }
    return list;
}

std::size_t CountOf(const std::vector<Reference>& references)
{
    std::size_t count = 0;
    for (const Reference& reference : references) {
        count += static_cast<std::size_t>(reference.count);
    }
    return count;
}

} // namespace management
