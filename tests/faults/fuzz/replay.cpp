#include "tests/faults/fuzz/fuzz.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include <unistd.h>

namespace fs = std::filesystem;

/// Gives each file of the folders to the target that this is linked with. What hangs is ended by SIGALRM.
int main(int count, char** folders)
{
    std::vector<fs::path> files;
    for (int i = 1; i < count; ++i)
        std::copy(fs::directory_iterator(folders[i]), fs::directory_iterator(), std::back_inserter(files));
    std::sort(files.begin(), files.end());
    for (const fs::path& path : files) {
        std::printf("%s\n", path.c_str());
        std::fflush(stdout);
        std::ifstream file(path, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        alarm(30);
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    return files.empty() ? 1 : 0;
}
