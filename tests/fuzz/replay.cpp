// SPDX-License-Identifier: MIT
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size);

/// Runs a fuzz target once on each file of a directory; fails when there is none.
int main(int argc, char **argv)
{
    int files = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto &entry : std::filesystem::directory_iterator(argv[i])) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string input((std::istreambuf_iterator<char>(file)),
                                    std::istreambuf_iterator<char>());
            LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char *>(input.data()),
                                   input.size());
            ++files;
        }
    }
    std::cout << files << " inputs replayed" << std::endl;
    return files > 0 ? 0 : 1;
}
