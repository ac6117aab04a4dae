#pragma once

#include <filesystem>
#include <random>
#include <string>

namespace vantlo::test {

/// A new empty folder that is removed, with all in it, at the end.
class TemporaryFolder {
public:
    TemporaryFolder()
        : path_(std::filesystem::temp_directory_path() / ("vantlo-test-" + std::to_string(std::random_device()()))) {
        if (!std::filesystem::create_directory(path_)) throw std::runtime_error("it exists already: " + path_.string());
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    /// The path of a file in it, which need not exist.
    [[nodiscard]] std::string file(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

}  // namespace vantlo::test
