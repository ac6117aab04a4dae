// Runs a fuzzer once on every file of its corpus, as a test: with any compiler, without the fuzzing engine.
//
// Usage: replay_NAME FOLDER

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

int main(int count, char** arguments) {
    if (count != 2) {
        std::cerr << "usage: " << arguments[0] << " FOLDER\n";
        return 2;
    }
    int inputs = 0;
    for (const auto& file : std::filesystem::directory_iterator(arguments[1])) {
        std::ifstream stream(file.path(), std::ios::binary);
        const std::string input{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
        ++inputs;
    }
    std::cout << inputs << " inputs\n";
    return inputs == 0 ? 1 : 0;
}
