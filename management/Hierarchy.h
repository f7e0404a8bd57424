#pragma once

#include "management/Errors.h"
#include "management/FrontEnd.h"
#include "management/Paths.h"
#include "management/Resolve.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace management {

/// How a node is linked with others, which are given by their numbers in Hierarchy::Places.
struct HierarchyNode {
    std::vector<std::size_t> children; ///< in the order of Places, each once
    std::vector<std::size_t> parents;  ///< each once
    std::optional<std::size_t> parent; ///< the parent by which its path goes; none at the beginning of a path
    bool isReachable = false;          ///< whether a top node leads to it; also true of top nodes
};

/// Nodes that others can be below, in several places and even in cycles: views and groups, or document roots and
/// folders. What is read of them when the object is made; what is written later does not show.
///
/// Node is a HierarchyNode and has
/// - `key`, a struct of kind and id, and `name`
/// - `static bool IsTop(Key)`, whether the key is one of a top node, and `static Key KeyOf(bool isTop, int id)`
/// - `bool BeginsPath() const`, whether its name alone begins a path; its id does in any case
/// - `kTop`, what a top node is called in ids and sentences, such as "view", `kInner`, what the others are called in
///   outcomes, and `kPathHelp`, how a path is written.
template <class Node>
class Hierarchy {
public:
    using Key = decltype(Node::key);

    /// In the order in which they are shown.
    [[nodiscard]] std::span<const Node> Nodes() const { return m_nodes; }
    /// Null for what is not there.
    [[nodiscard]] const Node* Find(Key key) const
    {
        const std::optional<std::size_t> number = IndexOf(key);
        return number ? &m_nodes[*number] : nullptr;
    }
    /// The number of a node that is there.
    [[nodiscard]] std::size_t NumberOf(Key key) const { return m_numbers.at(key); }
    [[nodiscard]] std::vector<Key> Keys(const std::vector<std::size_t>& numbers) const
    {
        std::vector<Key> keys;
        keys.reserve(numbers.size());
        std::ranges::transform(numbers, std::back_inserter(keys), [this](std::size_t i) { return m_nodes[i].key; });
        return keys;
    }

    /// A path that leads to a node and can be given as an argument; for what is not there, its id.
    [[nodiscard]] std::string PathOf(Key key) const
    {
        std::vector<std::string_view> names;
        const Node* node = Find(key);
        for (; node != nullptr && node->parent; node = &m_nodes[*node->parent]) {
            names.push_back(node->name);
        }
        std::string path = node == nullptr      ? KeyText(key)
                           : node->BeginsPath() ? "/" + PathEscaped(node->name)
                                                : KeyText(node->key);
        std::ranges::reverse(names);
        for (const std::string_view name : names) {
            path += fmt::format("/{}", PathEscaped(name));
        }
        return path;
    }

    /// "/View/Team (id 17)" or "/View (view 4)", for sentences.
    [[nodiscard]] Sentence Named(Key key) const
    {
        const Node* node = Find(key);
        const std::string path = PathOf(key);
        // A path that is an id says nothing of the name.
        const std::string text = node != nullptr && path == KeyText(key) ? node->name : path;
        return FillPattern("{} ({} {})", Visible(text), Sentence(Node::IsTop(key) ? Node::kTop : "id"), key.id);
    }

    /// What became of a node, for Call::Report.
    [[nodiscard]] Outcome OutcomeOf(Key key, std::string_view outcome, Sentence sentence) const
    {
        return {Node::IsTop(key) ? Node::kTop : Node::kInner, key.id, PathOf(key), outcome, std::move(sentence)};
    }

    /// @param bearers  the nodes of a name among which a name counts once. @throws Error (conflict) where one of them
    /// is not `self`.
    void RequireNoOther(const std::vector<Key>& bearers, const std::string& name, std::optional<Key> self) const
    {
        for (const Key bearer : bearers) {
            if (bearer != self) {
                throw Error(ErrorCode::conflict,
                            FillPattern("the name {} is taken by {}", Quoted(name), Named(bearer)));
            }
        }
    }

    /// All that is below, each once, in no order; the node itself only when a cycle leads back to it.
    [[nodiscard]] std::vector<Key> Below(Key key) const
    {
        const std::optional<std::size_t> from = IndexOf(key);
        return from ? Keys(Descendants(*from)) : std::vector<Key>();
    }

    /// What has no place any more once this node is gone: it, and what is below it and nowhere else; sorted.
    [[nodiscard]] std::vector<Key> OrphanedBy(Key key) const
    {
        const std::optional<std::size_t> top = IndexOf(key);
        if (!top) {
            return {};
        }
        const std::vector<std::size_t> below = Descendants(*top);
        std::unordered_set<std::size_t> going(below.begin(), below.end());
        going.insert(*top);
        const std::unordered_set<std::size_t> reach = going;
        std::vector<std::size_t> staying;
        const auto keep = [&](std::size_t node) {
            if (node != *top && going.erase(node) > 0) {
                staying.push_back(node);
            }
        };
        for (const std::size_t node : below) {
            const auto isElsewhere = [&reach](std::size_t parent) { return !reach.contains(parent); };
            if (std::ranges::any_of(m_nodes[node].parents, isElsewhere)) {
                keep(node);
            }
        }
        // What is below a node that stays, stays too; the list grows while it is walked.
        for (std::size_t next = 0; next < staying.size();) {
            std::ranges::for_each(m_nodes[staying[next++]].children, keep);
        }
        std::vector<Key> gone = Keys({going.begin(), going.end()});
        std::ranges::sort(gone);
        return gone;
    }

    /// The cycle that a link from a parent to a child would close, beginning and ending with the child; else nothing.
    [[nodiscard]] std::vector<Key> CycleClosedBy(Key parent, Key child) const
    {
        const std::optional<std::size_t> top = IndexOf(child);
        const std::optional<std::size_t> bottom = IndexOf(parent);
        if (!top || !bottom) {
            return {};
        }
        std::unordered_map<std::size_t, std::size_t> cameFrom = {{*top, *top}};
        std::vector<std::size_t> reached = {*top};
        for (std::size_t i = 0; i < reached.size() && !cameFrom.contains(*bottom); ++i) {
            const std::size_t node = reached[i];
            for (const std::size_t next : m_nodes[node].children) {
                if (cameFrom.emplace(next, node).second) {
                    reached.push_back(next);
                }
            }
        }
        if (!cameFrom.contains(*bottom)) {
            return {};
        }
        std::vector<std::size_t> cycle = {*top};
        for (std::size_t node = *bottom; node != *top; node = cameFrom.at(node)) {
            cycle.push_back(node);
        }
        cycle.push_back(*top);
        std::ranges::reverse(cycle);
        return Keys(cycle);
    }

    /// A cycle at or below a node, its first also its last; nothing when there is none.
    [[nodiscard]] std::vector<Key> FindCycle(Key from) const
    {
        const std::optional<std::size_t> number = IndexOf(from);
        return number ? Keys(FindCycleFrom(*number)) : std::vector<Key>();
    }

    /// "/A/B -> /A/B/C -> /A/B".
    [[nodiscard]] std::string CycleText(const std::vector<Key>& cycle) const
    {
        std::string text;
        for (const Key key : cycle) {
            text += (text.empty() ? "" : " -> ") + Visible(PathOf(key));
        }
        return text;
    }

    /// A path taken apart: what it begins with, unless that is a name, and the names.
    struct PathParts {
        std::optional<Key> head;
        std::vector<std::string> names;
    };

    /// The key that "id:17" or "view:4" means; nothing for any other text. @throws Error (invalid) for what only begins
    /// so.
    [[nodiscard]] static std::optional<Key> KeyIn(std::string_view text)
    {
        const std::size_t colon = text.find(':');
        const std::string_view prefix = text.substr(0, colon);
        if (colon == std::string_view::npos || (prefix != Node::kTop && prefix != "id")) {
            return std::nullopt;
        }
        const std::string_view digits = text.substr(colon + 1);
        int id = 0;
        const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), id);
        if (read.ec != std::errc() || read.ptr != digits.data() + digits.size()) {
            throw Error(ErrorCode::invalid,
                        FillPattern("{} is not an id; write {}: and a number", Quoted(text), prefix));
        }
        return Node::KeyOf(prefix == Node::kTop, id);
    }

    /// @throws Error (invalid) for what is not a path.
    [[nodiscard]] static PathParts PartsOf(const std::string& path)
    {
        const std::size_t begin = path.find('/');
        if (begin == 0) {
            return {std::nullopt, SplitPath(path)};
        }
        const std::optional<Key> head = KeyIn(std::string_view(path).substr(0, begin));
        if (!head) {
            throw Error(ErrorCode::invalid, FillPattern("{} is not a path; write {}", Quoted(path), Node::kPathHelp));
        }
        return {head, begin == std::string::npos ? std::vector<std::string>() : SplitPath(path.substr(begin))};
    }

protected:
    Hierarchy() = default;

    /// "id:17" or "view:4".
    [[nodiscard]] static std::string KeyText(Key key)
    {
        return fmt::format("{}:{}", Node::IsTop(key) ? Node::kTop : "id", key.id);
    }

    Node& Add(Key key)
    {
        Node& node = m_nodes.emplace_back();
        node.key = key;
        return node;
    }

    /// To be called once all nodes are there.
    template <class IsBefore>
    void Sort(IsBefore isBefore)
    {
        std::ranges::sort(m_nodes, isBefore);
        for (std::size_t i = 0; i < m_nodes.size(); ++i) {
            m_numbers[m_nodes[i].key] = i;
        }
    }

    /// Links two nodes if both are there.
    void Link(Key parent, Key child)
    {
        const std::optional<std::size_t> above = IndexOf(parent);
        const std::optional<std::size_t> below = IndexOf(child);
        if (above && below) {
            m_nodes[*above].children.push_back(*below);
            m_nodes[*below].parents.push_back(*above);
        }
    }

    /// Finds the path of each node; to be called once all are linked. @param beginnings  of top nodes, those by which
    /// paths go first.
    void FindPaths(std::initializer_list<std::function<bool(const Node&)>> beginnings)
    {
        for (Node& node : m_nodes) {
            for (std::vector<std::size_t>* ends : {&node.children, &node.parents}) {
                std::ranges::sort(*ends);
                ends->erase(std::unique(ends->begin(), ends->end()), ends->end());
            }
        }
        for (const auto& begins : beginnings) {
            Visit(NumbersOf(begins), true);
        }
        Visit(NumbersOf([](const Node& node) { return !node.isReachable && node.parents.empty(); }), false);
        // What is left is on cycles, or below them alone; each path begins somewhere on one.
        for (std::size_t i = 0; i < m_nodes.size(); ++i) {
            const Node& node = m_nodes[i];
            if (!node.isReachable && !node.parent && !node.parents.empty()) {
                Visit({i}, false);
            }
        }
    }

    [[nodiscard]] Node& At(std::size_t number) { return m_nodes[number]; }
    [[nodiscard]] std::optional<std::size_t> IndexOf(Key key) const
    {
        const auto found = m_numbers.find(key);
        return found == m_numbers.end() ? std::nullopt : std::optional(found->second);
    }

    /// The numbers of all that is below, each once; the node's own only when a cycle leads back to it.
    [[nodiscard]] std::vector<std::size_t> Descendants(std::size_t from) const
    {
        std::vector<std::size_t> reached;
        std::unordered_set<std::size_t> seen;
        const auto take = [&](std::size_t node) {
            for (const std::size_t child : m_nodes[node].children) {
                if (seen.insert(child).second) {
                    reached.push_back(child);
                }
            }
        };
        take(from);
        // The list grows while it is walked.
        for (std::size_t next = 0; next < reached.size();) {
            take(reached[next++]);
        }
        return reached;
    }

    /// All nodes to which a path may lead. @param topsNamed  gives the keys of the top nodes of a name.
    /// @param childrenNamed  gives those of a name directly under a key. @throws Error (invalid) for what is not a
    /// path.
    template <class TopsNamed, class ChildrenNamed>
    [[nodiscard]] std::vector<Key> Follow(const std::string& path, TopsNamed topsNamed,
                                          ChildrenNamed childrenNamed) const
    {
        PathParts parts = PartsOf(path);
        std::vector<Key> found;
        if (!parts.head) {
            found = topsNamed(parts.names.front());
            parts.names.erase(parts.names.begin());
        } else if (Find(*parts.head) != nullptr) {
            found.push_back(*parts.head);
        }
        for (const std::string& name : parts.names) {
            std::vector<Key> below;
            for (const Key parent : found) {
                std::ranges::copy(childrenNamed(parent, name), std::back_inserter(below));
            }
            KeepOnce(below);
            found = std::move(below);
        }
        return found;
    }

    static void KeepOnce(std::vector<Key>& keys)
    {
        std::ranges::sort(keys);
        keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    }

    /// @param listedBy  the command that lists them. @throws Error (notFound) for none, (conflict) that lists several.
    [[nodiscard]] Key RequireOne(const std::string& argument, const std::vector<Key>& found, std::string_view noun,
                                 std::string_view listedBy) const
    {
        if (found.empty()) {
            throw Error(ErrorCode::notFound, FillPattern("there is no {} {}; `qvadmin {}` shows all", Sentence(noun),
                                                         Quoted(argument), listedBy));
        }
        if (found.size() > 1) {
            std::vector<Candidate> candidates;
            candidates.reserve(found.size());
            for (const Key key : found) {
                candidates.push_back({Named(key), KeyText(key)});
            }
            ThrowAmbiguous(argument, candidates);
        }
        return found.front();
    }

private:
    struct KeyHash {
        std::size_t operator()(Key key) const
        {
            const auto [kind, id] = key;
            return std::hash<std::int64_t>()((static_cast<std::int64_t>(kind) << 32) ^ id);
        }
    };

    template <class IsWanted>
    [[nodiscard]] std::vector<std::size_t> NumbersOf(IsWanted isWanted) const
    {
        std::vector<std::size_t> numbers;
        for (std::size_t i = 0; i < m_nodes.size(); ++i) {
            if (isWanted(m_nodes[i])) {
                numbers.push_back(i);
            }
        }
        return numbers;
    }

    void Visit(std::vector<std::size_t> from, bool isReachable)
    {
        const std::unordered_set<std::size_t> begins(from.begin(), from.end());
        for (const std::size_t begin : from) {
            m_nodes[begin].isReachable = isReachable;
        }
        // The list grows while it is walked: the nearest nodes come first, so that paths are short.
        for (std::size_t i = 0; i < from.size(); ++i) {
            const std::size_t parent = from[i];
            for (const std::size_t child : m_nodes[parent].children) {
                Node& node = m_nodes[child];
                if (!node.isReachable && !node.parent && !begins.contains(child)) {
                    node.parent = parent;
                    node.isReachable = isReachable;
                    from.push_back(child);
                }
            }
        }
    }

    /// Walks down and keeps the way, without a call inside a call: some chains are long.
    [[nodiscard]] std::vector<std::size_t> FindCycleFrom(std::size_t from) const
    {
        enum class State : std::uint8_t { unseen, onWay, left };
        std::vector<State> states(m_nodes.size(), State::unseen);
        std::vector<std::pair<std::size_t, std::size_t>> way; // nodes, each with its next child
        const auto enter = [&](std::size_t node) {
            states[node] = State::onWay;
            way.emplace_back(node, 0);
        };
        enter(from);
        while (!way.empty()) {
            auto& [node, next] = way.back();
            const std::vector<std::size_t>& children = m_nodes[node].children;
            if (next == children.size()) {
                states[node] = State::left;
                way.pop_back();
                continue;
            }
            const std::size_t child = children[next++];
            if (states[child] == State::onWay) {
                std::vector<std::size_t> cycle;
                for (auto step = std::ranges::find(way, child, &std::pair<std::size_t, std::size_t>::first);
                     step != way.end(); ++step) {
                    cycle.push_back(step->first);
                }
                cycle.push_back(child);
                return cycle;
            }
            if (states[child] == State::unseen) {
                enter(child);
            }
        }
        return {};
    }

    std::vector<Node> m_nodes;
    std::unordered_map<Key, std::size_t, KeyHash> m_numbers;
};

} // namespace management
