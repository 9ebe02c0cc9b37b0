#pragma once

// A fresh directory per test, removed with everything in it afterwards.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace standin_test {

class scratch_dir {
  public:
    scratch_dir() {
        const auto base = std::filesystem::temp_directory_path() / "standin-";
        for (std::random_device random;
             path_.empty() || !std::filesystem::create_directory(path_);) {
            path_ = base.string() + std::to_string(random());
        }
    }
    ~scratch_dir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    scratch_dir(const scratch_dir&) = delete;
    scratch_dir& operator=(const scratch_dir&) = delete;

    std::string file(const std::string& name) const { return path_ + "/" + name; }
    std::string write(const std::string& name, const std::string& content) const {
        std::ofstream(file(name), std::ios::binary) << content;
        return file(name);
    }
    auto count() const { return std::distance(std::filesystem::directory_iterator(path_), {}); }

  private:
    std::string path_;
};

// What the tests need of the platform: host_posix.cpp, host_win32.cpp.
extern const char* const null_device;
// A FIFO, whose opener would wait for the other end; on Windows a named pipe.
std::string make_pipe(const scratch_dir& dir);
// Whether a temporary file stays nameless until it takes the output's name.
bool temporaries_are_nameless();
// Runs `body` with files limited to `bytes`, writes beyond failing; false
// where the platform has no such limit.
bool with_file_size_limit(uint64_t bytes, const std::function<void()>& body);

inline std::string read_file(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

inline std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

// Values to work out by hand: a 10 ms cycle of 1 mA for 2 ms and 100 uA for 8 ms, at 2 V.
inline constexpr const char* plain_board =
    "board 1\ntarget plain\nsupply_uv 2000000\ntrigger_delay_us 30000\n"
    "mode busy 1000000 2000 work:10000\nmode idle 100000 8000 wait:6000 poll:4000\n"
    "function work 0x1000 0x1100\nfunction wait 0x2000 0x2010\nfunction poll 0x3000 0x3080\n";

}  // namespace standin_test
