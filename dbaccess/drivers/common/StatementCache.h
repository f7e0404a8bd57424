#pragma once

#include "dbaccess/drivers/common/StatementShape.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <iterator>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace dbaccess {

/// A value for a placeholder of a kept statement.
struct ShapeValue {
    bool isText;
    std::string_view text; ///< of a text its value, of a number its literal; followed by a NUL
    std::int64_t number;   ///< of a number
};

/// The prepared statements of a session, kept by their shapes so that a statement with other literals is neither parsed
/// nor planned anew. A shape is prepared when it is met the second time; what is used least gives way to new ones.
///
/// Handle is what the engine's library knows a prepared statement by: default-constructed it is none, and it converts
/// to whether it is one. The cache and its leases belong to one thread at a time.
template <class Handle>
class StatementCache {
    struct Kept {
        std::string shape;
        Handle handle;         // none when the engine has refused the shape
        bool busy = false;     // lent
        std::string statement; // whose literals the values lie in
        std::vector<ShapeValue> values;
    };

public:
    /// A kept statement, lent with the values of one text. It is nobody else's until it is given back, which this
    /// object's end does; the values are wiped then.
    class Lease {
    public:
        Lease() = default;
        Lease(Lease&& other) noexcept : m_kept(std::move(other.m_kept)) {}
        Lease& operator=(Lease&& other) noexcept
        {
            std::swap(m_kept, other.m_kept);
            return *this;
        }
        ~Lease()
        {
            if (m_kept != nullptr) {
                ::explicit_bzero(m_kept->statement.data(), m_kept->statement.size());
                m_kept->busy = false;
            }
        }

        explicit operator bool() const noexcept { return m_kept != nullptr; }
        [[nodiscard]] Handle& Statement() const noexcept { return m_kept->handle; }
        [[nodiscard]] const std::vector<ShapeValue>& Values() const noexcept { return m_kept->values; }

    private:
        friend class StatementCache;
        explicit Lease(std::shared_ptr<Kept> kept) : m_kept(std::move(kept)) { m_kept->busy = true; }

        std::shared_ptr<Kept> m_kept;
    };

    /// @param capacity  how many statements are kept; 0 for none.
    StatementCache(std::size_t capacity, ShapeSyntax syntax) : m_capacity(capacity), m_shape(syntax) {}

    /// Lends the kept statement of a text's shape.
    /// @param statement  in UTF-8.
    /// @param prepare  Handle(const std::string& shape, std::size_t values, Handle evicted): prepares a shape. It gives
    ///        none when the engine refuses it or counts other values. It takes over the statement that gives way, if
    ///        any.
    /// @return none when the text must be run as it is: its shape is met for the first time, or must not be cut, is
    ///         refused by the engine, or lent already. @throws what `prepare` throws.
    template <class Prepare>
    Lease Take(std::string_view statement, Prepare prepare)
    {
        if (m_capacity == 0 || !m_shape.Cut(statement)) {
            return {};
        }
        const auto found = m_byShape.find(m_shape.Text());
        if (found != m_byShape.end()) {
            m_kept.splice(m_kept.begin(), m_kept, found->second);
        } else if (!WasMet() || !Add(prepare)) {
            return {};
        }
        const std::shared_ptr<Kept>& kept = m_kept.front();
        if (!kept->handle || kept->busy) {
            return {};
        }
        SetValues(*kept, statement);
        return Lease(kept);
    }

    /// Gives up a statement that the engine no longer knows.
    void Forget(const Lease& lease)
    {
        const auto found = m_byShape.find(lease.m_kept->shape);
        if (found != m_byShape.end() && *found->second == lease.m_kept) {
            m_kept.erase(found->second);
            m_byShape.erase(found);
        }
    }

    /// Gives up all statements; one that is lent lasts until it is given back.
    void Clear() noexcept
    {
        m_byShape.clear();
        m_kept.clear();
    }

private:
    using List = std::list<std::shared_ptr<Kept>>;

    // By its hash alone: of two shapes that have the same one, the second would be prepared a call too early.
    bool WasMet()
    {
        const std::size_t hash = std::hash<std::string_view>{}(m_shape.Text());
        for (const std::size_t met : m_met) {
            if (met == hash) {
                return true;
            }
        }
        m_met[m_nextMet] = hash;
        m_nextMet = (m_nextMet + 1) % m_met.size();
        return false;
    }

    // At the front. @return false when all that is kept is lent.
    template <class Prepare>
    bool Add(Prepare& prepare)
    {
        Handle evicted;
        if (m_kept.size() >= m_capacity) {
            auto last = std::find_if(m_kept.rbegin(), m_kept.rend(), [](const auto& kept) { return !kept->busy; });
            if (last == m_kept.rend()) {
                return false;
            }
            evicted = std::move((*last)->handle);
            m_byShape.erase((*last)->shape);
            m_kept.erase(std::next(last).base());
        }
        auto kept = std::make_shared<Kept>();
        kept->shape = m_shape.Text();
        kept->handle = prepare(std::as_const(kept->shape), m_shape.Literals().size(), std::move(evicted));
        m_kept.push_front(std::move(kept));
        try {
            m_byShape.emplace(m_kept.front()->shape, m_kept.begin());
        } catch (...) {
            m_kept.pop_front();
            throw;
        }
        return true;
    }

    void SetValues(Kept& kept, std::string_view statement)
    {
        kept.values.resize(m_shape.Literals().size());
        kept.statement = statement;
        char* const text = kept.statement.data();
        for (std::size_t i = 0; i < kept.values.size(); ++i) {
            const CutLiteral& literal = m_shape.Literals()[i];
            const std::string_view value = literal.isText ? m_shape.UnescapeInPlace(text, literal)
                                                          : std::string_view(text + literal.begin, literal.length);
            // In the place of the closing quote, or of what ends a number: a literal touches no other.
            text[static_cast<std::size_t>(value.data() - text) + value.size()] = '\0';
            kept.values[i] = {literal.isText, value, literal.number};
        }
    }

    std::size_t m_capacity;
    StatementShape m_shape;
    List m_kept; // the one used last first
    std::unordered_map<std::string_view, typename List::iterator> m_byShape;
    std::array<std::size_t, 128> m_met{};
    std::size_t m_nextMet = 0;
};

} // namespace dbaccess
