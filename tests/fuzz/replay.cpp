// Hands every file of the given folders to the fuzz target, in byte order of their names.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int count, char** arguments)
{
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < count; ++i)
        for (const auto& entry : std::filesystem::recursive_directory_iterator(arguments[i]))
            if (entry.is_regular_file())
                files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const auto& file : files) {
        std::printf("%s\n", file.c_str());
        std::fflush(stdout); // the last line names the file that fails
        std::ifstream in(file, std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(in), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%zu files\n", files.size());
    return files.empty() ? 1 : 0;
}
