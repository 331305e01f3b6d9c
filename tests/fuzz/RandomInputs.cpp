// Stands in for the fuzzer's own main program where the compiler has none: changes the files of the corpus at
// random. usage: PROGRAM -runs=N FOLDER
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace
{
using CInput = std::vector<uint8_t>;

std::vector<CInput> ReadCorpus(const char* folder)
{
    std::vector<CInput> inputs = {{}};
    for (const auto& entry : std::filesystem::directory_iterator(folder))
    {
        std::ifstream file(entry.path(), std::ios::binary);
        inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return inputs;
}

CInput Change(CInput input, std::mt19937_64& random)
{
    if (random() % 4 == 0)
        input.resize(random() % 200, static_cast<uint8_t>(random()));
    for (uint64_t left = random() % 8; left > 0 && !input.empty(); --left)
        input[random() % input.size()] = static_cast<uint8_t>(random());
    return input;
}
} // namespace

int main(int count, char** arguments)
{
    const std::string runs = count == 3 ? arguments[1] : "";
    if (!runs.starts_with("-runs="))
        return 2;
    const unsigned long long wanted = std::strtoull(runs.c_str() + 6, nullptr, 10);
    const std::vector<CInput> corpus = ReadCorpus(arguments[2]);
    std::mt19937_64 random(20'261'122);
    for (unsigned long long done = 0; done < wanted; ++done)
    {
        const CInput input = Change(corpus[random() % corpus.size()], random);
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
    std::printf("Done %llu runs\n", wanted);
    return 0;
}
