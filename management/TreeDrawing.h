#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace management {

/// Why what is below a node is not drawn below it.
enum class TreeMark : std::uint8_t {
    none,
    cycle, ///< the node is below itself
    above, ///< it was drawn above, with all that is below it
};

/// A mark for programs: one word, or nothing.
std::string_view NameOf(TreeMark mark);

/// A line of a tree: a node, a leaf of a node, or the heading of what no root leads to.
struct TreeLine {
    std::string_view indent; ///< box characters, those of the last column apart
    std::string_view branch; ///< those of the last column
    std::size_t depth = 0;
    std::optional<std::size_t> node; ///< none: this is the heading
    std::optional<std::size_t> leaf; ///< which one of the node's leaves; none: the node itself
    std::optional<std::size_t> parent;
    TreeMark mark = TreeMark::none;

    /// The line as people see it, without its end. @param text  what the node, leaf or heading is called there.
    [[nodiscard]] std::string Drawn(std::string_view text) const;
};

/// What trees are drawn of: nodes, given by their numbers.
struct TreeNodes {
    std::size_t count = 0;
    std::function<std::span<const std::size_t>(std::size_t node)> childrenOf; ///< the spans outlive the drawing
    std::function<std::size_t(std::size_t node)> countLeaves; ///< of those drawn before the children; may be empty
};

/// Gives trees out line by line and keeps only the way to the present one. A node that was drawn already is drawn again
/// without what is below it, so that neither cycles nor nodes with several parents make a tree endless.
class TreeDrawing {
public:
    /// Takes a line, whose texts live no longer than the call. @return false when no more are wanted.
    using Sink = std::function<bool(const TreeLine& line)>;

    /// @param levels  how many are drawn below a root; nothing: all.
    TreeDrawing(TreeNodes nodes, std::optional<int> levels, Sink sink);

    /// Draws one node as a root, with what is below it.
    void Draw(std::size_t root);
    /// Draws every root, and below a heading, if there are any, the nodes that no root leads to.
    void DrawAll(const std::vector<std::size_t>& roots, const std::vector<std::size_t>& unrooted);

private:
    enum class State : std::uint8_t { unseen, onWay, drawn };
    struct Step {
        std::optional<std::size_t> node; ///< none for the heading
        std::span<const std::size_t> children;
        std::size_t indent = 0; ///< length of its children's
        std::size_t next = 0;
    };

    void Finish();
    void Enter(std::size_t node, std::optional<std::size_t> parent, std::string_view branch);
    void DrawLeaves(std::size_t node, bool hasChildren);
    void Give(const TreeLine& line);

    TreeNodes m_nodes;
    std::size_t m_levels;
    Sink m_sink;
    std::vector<State> m_state;
    std::vector<Step> m_steps;
    std::string m_indent;
    bool m_isOver = false;
};

/// The numbers of the elements that are wanted.
template <class Range, class IsWanted>
std::vector<std::size_t> NumbersWhere(const Range& range, IsWanted isWanted)
{
    std::vector<std::size_t> numbers;
    for (std::size_t i = 0; i < range.size(); ++i) {
        if (isWanted(range[i])) {
            numbers.push_back(i);
        }
    }
    return numbers;
}

} // namespace management
