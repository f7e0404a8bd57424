// Runs a fuzzer's function without a fuzzer: over the files of its corpus, then over inputs put together at random from
// pieces that have caused trouble before. Usage: FUZZER CORPUS-FOLDER COUNT

#include "fuzz/Fuzz.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace {

void Run(const std::string& input)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

std::string RandomInput(std::mt19937& random)
{
    static const std::vector<std::string> pieces = {"'",
                                                    "''",
                                                    "\\",
                                                    "\\'",
                                                    "\\\\",
                                                    "\"",
                                                    "%s",
                                                    "%d",
                                                    "#%s#",
                                                    "--",
                                                    "/*",
                                                    "*/",
                                                    ";",
                                                    "O'Brien",
                                                    "a\\b",
                                                    "\xc3\xa9",
                                                    "\xd0\xae",
                                                    "\x95",
                                                    R"(\)",
                                                    "\xd6",
                                                    "\xff",
                                                    "\xe4\xb8",
                                                    "\xf0\x9f\x98\x80",
                                                    "\n",
                                                    "\r\n",
                                                    "\t",
                                                    "2013-05-07",
                                                    "0000",
                                                    "-02-30",
                                                    " 24:00:00",
                                                    ":",
                                                    std::string(1, '\0'),
                                                    "Admin",
                                                    "x",
                                                    " ",
                                                    std::string(24, 'y'),
                                                    "\xed\xa0\x80"};
    std::string input;
    for (std::size_t left = random() % 12; left > 0; --left) {
        input += random() % 4 == 0 ? std::string(1, static_cast<char>(random())) : pieces[random() % pieces.size()];
    }
    return input;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: " << argv[0] << " CORPUS-FOLDER COUNT\n";
        return 2;
    }
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        files.push_back(entry.path());
    }
    std::ranges::sort(files);
    for (const auto& file : files) {
        std::ifstream in(file, std::ios::binary);
        Run({std::istreambuf_iterator<char>(in), {}});
    }
    std::mt19937 random(20130507);
    const int count = std::stoi(argv[2]);
    for (int i = 0; i < count; ++i) {
        Run(RandomInput(random));
    }
    std::cout << files.size() << " files and " << count << " made inputs held\n";
    return files.empty() ? 1 : 0;
}
