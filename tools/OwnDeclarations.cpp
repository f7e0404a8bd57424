#include <clang/AST/ASTConsumer.h>
#include <clang/AST/ASTContext.h>
#include <clang/Basic/SourceManager.h>
#include <clang/Frontend/CompilerInstance.h>
#include <clang/Frontend/FrontendPluginRegistry.h>

#include <memory>
#include <string>
#include <vector>

// A plugin of Clang for tools/tidy. The checks would look at every declaration of the standard library and of the test
// framework, for each source anew, and clang-tidy would then drop what they say of them; that took most of its time.

namespace {

class OwnDeclarations final : public clang::ASTConsumer {
public:
    void HandleTranslationUnit(clang::ASTContext& context) override
    {
        std::vector<clang::Decl*> own;
        // Without those of a precompiled header: they are not ours, and reading them in takes long.
        for (clang::Decl* each : context.getTranslationUnitDecl()->noload_decls()) {
            if (!context.getSourceManager().isInSystemHeader(each->getLocation())) {
                own.push_back(each);
            }
        }
        context.setTraversalScope(own);
    }
};

class Action final : public clang::PluginASTAction {
protected:
    std::unique_ptr<clang::ASTConsumer> CreateASTConsumer(clang::CompilerInstance& /*compiler*/,
                                                          llvm::StringRef /*file*/) override
    {
        return std::make_unique<OwnDeclarations>();
    }
    bool ParseArgs(const clang::CompilerInstance& /*compiler*/, const std::vector<std::string>& /*arguments*/) override
    {
        return true;
    }
    ActionType getActionType() override { return AddBeforeMainAction; }
};

const clang::FrontendPluginRegistry::Add<Action> kAction("own-declarations", "shows checks no system headers");

} // namespace
