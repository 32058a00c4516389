// Runs a fuzz harness over files given on the command line, so that every corpus is also an ordinary test, with any
// compiler.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

// The harness may change the working directory, so all inputs are read before the first one runs.
std::vector<std::vector<std::uint8_t>> readAll(int count, char** folders)
{
    std::vector<std::vector<std::uint8_t>> inputs;
    for (int i = 0; i < count; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(folders[i])) {
            std::ifstream file(entry.path(), std::ios::binary);
            inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        }
    }
    return inputs;
}

}  // namespace

int main(int argc, char** argv)
{
    const auto inputs = readAll(argc - 1, argv + 1);
    if (inputs.empty()) {
        std::cerr << "no inputs\n";
        return 1;
    }
    for (const std::vector<std::uint8_t>& input : inputs) {
        // Cut at every length too: a torn file is the damage that happens most.
        for (std::size_t size = 0; size < input.size(); size += 1 + size / 40) {
            LLVMFuzzerTestOneInput(input.data(), size);
        }
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
    std::cout << inputs.size() << " inputs replayed\n";
    return 0;
}
