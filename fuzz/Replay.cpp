// Runs one fuzz target over its seeds and over the inputs it is given, without a fuzzer.
#include "Target.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

namespace fs = std::filesystem;

namespace {

constexpr const char* usage =
    "usage: replay-TARGET [FILE|DIR...]\n       replay-TARGET --write-seeds DIR\n\n"
    "Runs the target over its seeds and the given inputs. A folder that is missing holds none.\n"
    "--write-seeds only writes the seeds, a file each.\n";

void run(const std::string& input)
{
    // A copy of its exact size, so that a sanitizer sees a read past its end.
    const std::vector<std::uint8_t> bytes(input.begin(), input.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

void runFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path.string());
    }
    std::cout << path.string() << std::endl; // before it runs: it may be the last line
    run({std::istreambuf_iterator<char>(file), {}});
}

void writeSeeds(const fs::path& directory)
{
    fs::create_directories(directory);
    std::size_t number = 0;
    for (const std::string& seed : seedInputs()) {
        std::ofstream file(directory / ("seed-" + std::to_string(number++)), std::ios::binary);
        file.write(seed.data(), static_cast<std::streamsize>(seed.size()));
        if (!file.flush()) {
            throw std::runtime_error("cannot write to " + directory.string());
        }
    }
}

void replay(const std::vector<std::string>& paths)
{
    std::vector<fs::path> files;
    for (const std::string& path : paths) {
        if (fs::is_regular_file(path)) {
            files.emplace_back(path);
        } else if (fs::is_directory(path)) {
            std::copy(fs::directory_iterator(path), {}, std::back_inserter(files));
        }
    }
    std::ranges::sort(files);
    std::ranges::for_each(files, runFile);
    const std::vector<std::string> seeds = seedInputs();
    std::ranges::for_each(seeds, run);
    std::cout << files.size() << " inputs and " << seeds.size() << " seeds replayed\n";
}

} // namespace

int main(int count, char** values)
try {
    const std::vector<std::string> arguments(values + 1, values + count);
    if (!arguments.empty() && (arguments[0] == "--help" || arguments[0] == "-h")) {
        std::cout << usage;
    } else if (!arguments.empty() && arguments[0] == "--write-seeds") {
        if (arguments.size() != 2) {
            std::cerr << usage;
            return 2;
        }
        writeSeeds(arguments[1]);
    } else if (!arguments.empty() && arguments[0].starts_with('-')) {
        std::cerr << usage;
        return 2;
    } else {
        replay(arguments);
    }
    return 0;
} catch (const std::exception& error) {
    std::cerr << values[0] << ": " << error.what() << '\n';
    return 2;
}
