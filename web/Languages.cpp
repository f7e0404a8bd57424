#include "web/Languages.h"

#include "management/Errors.h"
#include "management/Text.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <iterator>
#include <map>
#include <system_error>

namespace web {

namespace {

/// Bytes of a list of ranges that are read: nobody reads so many languages.
constexpr std::size_t kMostRead = 200;

std::string_view Trimmed(std::string_view text)
{
    constexpr const char* blanks = " \t";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

/// The weight in the parameters of a range, such as "q=0.8"; 0 where it is not wanted, or is written wrong.
double WeightOf(std::string_view parameters)
{
    double weight = parameters.empty() ? 1 : 0;
    if (parameters.starts_with("q=")) {
        std::from_chars(parameters.data() + 2, parameters.data() + parameters.size(), weight);
    }
    return weight;
}

/// The ranges that are wanted, the most wanted one first.
std::vector<std::string> RangesOf(std::string_view accepted)
{
    std::multimap<double, std::string, std::greater<>> ranges;
    for (const std::string& part : management::SplitAtCommas(accepted)) {
        const std::size_t end = std::min(part.find(';'), part.size());
        const double weight = WeightOf(Trimmed(std::string_view(part).substr(std::min(end + 1, part.size()))));
        if (weight > 0) {
            ranges.emplace(weight, management::InSmallLetters(Trimmed(std::string_view(part).substr(0, end))));
        }
    }
    std::vector<std::string> names;
    std::ranges::transform(ranges, std::back_inserter(names), [](const auto& range) { return range.second; });
    return names;
}

} // namespace

Languages::Languages(const std::filesystem::path& folder)
{
    m_all.emplace_back();
    std::error_code error;
    for (const std::filesystem::directory_entry& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::filesystem::path file = entry.path() / "LC_MESSAGES" / "qvadmin.mo";
        if (!std::filesystem::exists(file, error)) {
            continue;
        }
        try {
            std::string tag = entry.path().filename();
            std::ranges::replace(tag, '_', '-');
            m_all.push_back({tag, std::make_unique<management::Catalogue>(file)});
        } catch (const management::Error&) { // NOLINT(bugprone-empty-catch): English is said in its place
        }
    }
    std::ranges::sort(m_all.begin() + 1, m_all.end(), {}, &One::tag);
}

const Languages::One& Languages::For(std::string_view accepted) const
{
    for (const std::string& range : RangesOf(accepted.substr(0, kMostRead))) {
        // "de-AT" is served by "de" (RFC 4647, 3.4), and "zh" by "zh-CN".
        for (std::size_t length = range.size(); length != 0 && length != std::string::npos;
             length = range.rfind('-', length - 1)) {
            const std::string_view wanted = std::string_view(range).substr(0, length);
            const auto found = std::ranges::find_if(m_all, [wanted](const One& one) {
                const std::string tag = management::InSmallLetters(one.tag);
                return tag == wanted || tag.starts_with(std::string(wanted) + "-");
            });
            if (found != m_all.end()) {
                return *found;
            }
        }
    }
    return m_all.front();
}

const std::string& Languages::TagOf(const management::Language* catalogue) const
{
    return std::ranges::find(m_all, catalogue, [](const One& one) { return one.catalogue.get(); })->tag;
}

} // namespace web
