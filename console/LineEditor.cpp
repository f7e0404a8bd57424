#include "console/LineEditor.h"

#include "management/ProgramModule.h"

namespace console {

std::unique_ptr<LineEditor> OpenLineEditor(const std::string& prompt, const LineEditor::Complete& complete,
                                           const LineEditor::SayMore& sayMore, std::ostream& err)
{
    auto* open =
        reinterpret_cast<OpenLineEditorFunction*>(management::LoadFromModule(kLineEditorModule, kOpenLineEditorSymbol));
    return std::unique_ptr<LineEditor>(open(&prompt, &complete, &sayMore, &err));
}

} // namespace console
