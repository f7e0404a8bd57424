#pragma once

namespace management {

/// One function object of several lambdas, for std::visit.
template <class... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

} // namespace management
