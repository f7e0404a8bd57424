#pragma once

#include <memory>

namespace CLI {
class FormatterBase;
}

namespace console {

/// How the help texts are laid out.
std::shared_ptr<CLI::FormatterBase> MakeHelpFormatter();

} // namespace console
