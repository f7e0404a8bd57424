#include "management/TreeDrawing.h"

#include <fmt/format.h>

#include <limits>
#include <utility>

namespace management {

namespace {

constexpr std::string_view kBranch = "├── ";
constexpr std::string_view kLastBranch = "└── ";
constexpr std::string_view kLine = "│   ";
constexpr std::string_view kNoLine = "    ";

std::string_view MarkText(TreeMark mark)
{
    return mark == TreeMark::cycle ? " [cycle: leads back to itself]" : mark == TreeMark::above ? " [shown above]" : "";
}

} // namespace

std::string_view NameOf(TreeMark mark)
{
    return mark == TreeMark::cycle ? "cycle" : mark == TreeMark::above ? "above" : "";
}

std::string TreeLine::Drawn(std::string_view text) const
{
    return fmt::format("{}{}{}{}", indent, branch, text, MarkText(mark));
}

TreeDrawing::TreeDrawing(TreeNodes nodes, std::optional<int> levels, Sink sink)
    : m_nodes(std::move(nodes)),
      m_levels(levels ? static_cast<std::size_t>(*levels) : std::numeric_limits<std::size_t>::max()),
      m_sink(std::move(sink)),
      m_state(m_nodes.count, State::unseen)
{
}

void TreeDrawing::Draw(std::size_t root)
{
    Enter(root, std::nullopt, "");
    Finish();
}

void TreeDrawing::DrawAll(const std::vector<std::size_t>& roots, const std::vector<std::size_t>& unrooted)
{
    for (const std::size_t root : roots) {
        Draw(root);
    }
    if (!unrooted.empty()) {
        Give({});
        m_steps.push_back({std::nullopt, unrooted});
        Finish();
    }
}

void TreeDrawing::Finish()
{
    while (!m_steps.empty() && !m_isOver) {
        Step& step = m_steps.back();
        if (step.next == step.children.size()) {
            if (step.node) {
                m_state[*step.node] = State::drawn;
            }
            m_steps.pop_back();
            continue;
        }
        m_indent.resize(step.indent);
        const std::size_t child = step.children[step.next++];
        Enter(child, step.node, step.next == step.children.size() ? kLastBranch : kBranch);
    }
    m_indent.clear();
}

void TreeDrawing::Enter(std::size_t node, std::optional<std::size_t> parent, std::string_view branch)
{
    const std::span<const std::size_t> children = m_nodes.childrenOf(node);
    const TreeMark mark = m_state[node] == State::onWay                        ? TreeMark::cycle
                          : m_state[node] == State::drawn && !children.empty() ? TreeMark::above
                                                                               : TreeMark::none;
    const std::size_t depth = m_steps.size();
    Give({m_indent, branch, depth, node, std::nullopt, parent, mark});
    if (mark != TreeMark::none || depth >= m_levels) {
        return;
    }
    m_indent += branch.empty() ? "" : branch == kLastBranch ? kNoLine : kLine;
    m_state[node] = State::onWay;
    m_steps.push_back({node, children, m_indent.size()});
    DrawLeaves(node, !children.empty());
}

void TreeDrawing::DrawLeaves(std::size_t node, bool hasChildren)
{
    const std::size_t count = m_nodes.countLeaves ? m_nodes.countLeaves(node) : 0;
    for (std::size_t leaf = 0; leaf < count; ++leaf) {
        const bool isLast = !hasChildren && leaf + 1 == count;
        Give({m_indent, isLast ? kLastBranch : kBranch, m_steps.size(), node, leaf, node});
    }
}

void TreeDrawing::Give(const TreeLine& line) { m_isOver = m_isOver || !m_sink(line); }

} // namespace management
