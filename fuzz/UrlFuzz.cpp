// A password in a URL is never shown, and a URL that is asked not to make a file makes none.

#include "console/Url.h"
#include "fuzz/Fuzz.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::string_view secret = "Xs3cretX";
    const std::string text(fuzz::Text(data, size));
    static_cast<void>(console::ShownUrl(text));

    const std::string careful = console::WithoutCreating(text);
    fuzz::Require(console::WithoutCreating(careful) == careful, "what is careful already stays as it is");
    fuzz::Require(careful == text || !console::MakesFile(careful), "a file is made only where the URL itself says so");

    // The text before and after, without what would end the password or begin another part.
    std::string plain;
    for (const char ch : text) {
        plain += std::string_view("/@:?&=#;{}%").find(ch) == std::string_view::npos ? std::string(1, ch) : "";
    }
    if (plain.find(secret) != std::string::npos) {
        return 0; // a user's name is shown
    }
    for (const char* scheme : {"mysql://", "postgresql://"}) {
        const std::string withPassword = std::string(scheme) + plain + ":" + std::string(secret) + "@host/database";
        fuzz::Require(console::ShownUrl(withPassword).find(secret) == std::string::npos, "no user's password is shown");
    }
    return 0;
}
