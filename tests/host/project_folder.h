// Where the project's own files lie, for tests on its data.
#pragma once

#include <filesystem>

namespace vornel::test {

inline std::filesystem::path ProjectFolder() {
    return std::filesystem::path(VORNEL_TEST_DATA).parent_path().parent_path();
}

}  // namespace vornel::test
