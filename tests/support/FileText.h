#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace corvalog {

// The bytes of a file, "" when it cannot be read.
inline std::string fileText(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    return { std::istreambuf_iterator<char>(in), {} };
}

// Replaces the file with the bytes and gives back its path.
inline std::string writeFile(const std::string &path, const std::string &bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

} // namespace corvalog
