#pragma once

#include "files/name.h"
#include "jet/result.h"

#include <filesystem>
#include <new>
#include <stdexcept>

namespace quorvel::jet {

/// Why something needed more memory than there is.
inline Failure outOfMemory(const std::filesystem::path& path)
{
    return Failure{files::inWords(path) +
                   " needs more memory than there is. Close other programs and try again."};
}

/// Runs what a caller of this module asked for: memory that runs out becomes a reason here.
template<class Call>
auto atBorder(const std::filesystem::path& path, Call call) -> decltype(call())
{
    try {
        return call();
    } catch (const std::bad_alloc&) {
        return outOfMemory(path);
    } catch (const std::length_error&) {
        return outOfMemory(path);
    }
}

} // namespace quorvel::jet
