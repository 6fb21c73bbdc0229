// The session under data/, read.
#pragma once

#include <filesystem>
#include <string>

#include "project_folder.h"
#include "session/inputs.h"
#include "solve/preparation.h"

namespace vornel::test {

// Markers, ECEF metres (data/README.md).
inline constexpr session::Vector3 kWtzr{4075580.3111, 931854.0543, 4801568.2808};
inline constexpr session::Vector3 kWtzz{4075579.1913, 931853.3696, 4801569.1897};

inline session::InputPaths Wettzell() {
    const std::string folder = (ProjectFolder() / "data" / "wettzell").string() + "/";
    return {{folder + "WTZR00DEU_R_20201770000_01H_30S_MO.rnx.gz"},
            {folder + "WTZZ00DEU_R_20201770000_01H_30S_MO.rnx.gz"},
            {folder + "ESBC00DNK_R_20201770000_01D_MN.rnx.gz",
             folder + "ESBC00DNK_R_20201770000_01D_RN.rnx.gz"}};
}

inline session::Inputs ReadWettzell(const session::Settings& settings = {}) {
    return session::ReadInputs(Wettzell(), solve::SelectionFor(settings));
}

}  // namespace vornel::test
