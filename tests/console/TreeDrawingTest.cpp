#include "management/TreeDrawing.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

using namespace management;
using testing::ElementsAre;

namespace {

using Children = std::vector<std::vector<std::size_t>>;

/// The first lines of a drawing, each node called by its number and each leaf by both numbers.
std::vector<std::string> Drawn(const Children& children, const std::vector<std::size_t>& roots,
                               const std::vector<std::size_t>& unrooted = {}, std::optional<int> levels = {},
                               std::size_t leaves = 0, std::size_t wanted = 100)
{
    std::vector<std::string> lines;
    TreeDrawing drawing({children.size(), [&](std::size_t node) { return std::span(children[node]); },
                         [&](std::size_t) { return leaves; }},
                        levels, [&](const TreeLine& line) {
                            const std::string text = !line.node  ? "Others:"
                                                     : line.leaf ? fmt::format("{}.{}", *line.node, *line.leaf)
                                                                 : std::to_string(*line.node);
                            lines.push_back(line.Drawn(text));
                            return lines.size() < wanted;
                        });
    drawing.DrawAll(roots, unrooted);
    return lines;
}

} // namespace

TEST(TreeDrawingTest, LeavesComeBeforeChildrenAndTheLastOfAllHasACorner)
{
    EXPECT_THAT(Drawn({{1, 2}, {}, {}}, {0}, {}, {}, 1),
                ElementsAre("0", "├── 0.0", "├── 1", "│   └── 1.0", "└── 2", "    └── 2.0"));
    EXPECT_THAT(Drawn({{1, 2}, {}, {}}, {0}, {}, 1, 1), ElementsAre("0", "├── 0.0", "├── 1", "└── 2"));
}

TEST(TreeDrawingTest, CyclesAndWhatWasDrawnAreMarkedAndGoNoFurther)
{
    EXPECT_THAT(Drawn({{1, 2}, {0}, {1}, {4}, {}}, {0}, {3, 4}),
                ElementsAre("0", "├── 1", "│   └── 0 [cycle: leads back to itself]", "└── 2", "    └── 1 [shown above]",
                            "Others:", "├── 3", "│   └── 4", "└── 4"));
}

TEST(TreeDrawingTest, NothingIsDrawnAnyMoreOnceNoMoreIsWanted)
{
    EXPECT_THAT(Drawn({{1}, {}, {}}, {0, 2}, {2}, {}, 3, 3), ElementsAre("0", "├── 0.0", "├── 0.1"));
}
