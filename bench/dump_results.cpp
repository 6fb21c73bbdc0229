// dump_results: everything that the queries give on simulated sessions of every solve model, each
// double in hexadecimal, so that the outputs of two builds can be compared to the bit.
#include <cstdio>
#include <string>
#include <vector>

#include "VornelBlCore.h"
#include "sessions.h"

namespace {

using vornel::simulation::Scenario;

void Print(const char* name, const std::vector<double>& values) {
    std::printf("%s", name);
    for (const double value : values) {
        std::printf(" %a", value);
    }
    std::printf("\n");
}

// The base data of a solution: `query` takes the 31 pointers.
template <class Query>
void PrintBaseData(const char* name, int modeAsked, Query query) {
    int mode = modeAsked, dof = 0;
    std::vector<double> d(29, 0.0);
    double* p = d.data();
    const int found =
        query(&mode, p, p + 1, p + 2, p + 3, p + 4, p + 5, &dof, p + 6, p + 7, p + 8, p + 9, p + 10,
              p + 11, p + 12, p + 13, p + 14, p + 15, p + 16, p + 17, p + 18, p + 19, p + 20,
              p + 21, p + 22, p + 23, p + 24, p + 25, p + 26, p + 27, p + 28);
    std::printf("%s found %d mode %d dof %d\n", name, found, mode, dof);
    Print("  values", d);
}

// The ambiguities of a solution: `query` takes the 16 arrays.
template <class Query>
void PrintAmbiguities(int count, Query query) {
    const auto n = static_cast<std::size_t>(count);
    std::vector<int> i[8];
    std::vector<double> d[6];
    for (auto& list : i) {
        list.assign(n + 1, 0);
    }
    for (auto& list : d) {
        list.assign(n + 1, 0.0);
    }
    std::vector<int> weeks[2] = {i[4], i[5]};
    query(i[0].data(), i[1].data(), i[2].data(), i[3].data(), weeks[0].data(), d[0].data(),
          weeks[1].data(), d[1].data(), d[2].data(), d[3].data(), i[4].data(), i[5].data(),
          i[6].data(), i[7].data(), d[4].data(), d[5].data());
    for (std::size_t k = 0; k < n; ++k) {
        std::printf("  ambiguity %d %d %d %d rows %d %d rejected %d %d\n", i[0][k], i[1][k],
                    i[2][k], i[3][k], i[4][k], i[5][k], i[6][k], i[7][k]);
        Print("   ", {d[0][k], d[1][k], d[2][k], d[3][k], d[4][k], d[5][k]});
    }
}

// The residuals of a solution.
template <class SatList, class Size, class List>
void PrintResiduals(int satCount, SatList satList, Size size, List list) {
    std::vector<int> systems(static_cast<std::size_t>(satCount) + 1), prns(systems.size());
    satList(satCount, systems.data(), prns.data());
    for (std::size_t s = 0; s + 1 < systems.size(); ++s) {
        for (int kind = 0; kind < 2; ++kind) {
            const int count = size(systems[s], prns[s], kind);
            std::vector<int> weeks(static_cast<std::size_t>(count) + 1), values(weeks.size());
            std::vector<double> seconds(weeks.size());
            list(systems[s], prns[s], kind, count, weeks.data(), seconds.data(), values.data());
            std::printf("  residuals %d %d %d:", systems[s], prns[s], kind);
            for (int k = 0; k < count; ++k) {
                std::printf(" %.3f/%d", seconds[static_cast<std::size_t>(k)],
                            values[static_cast<std::size_t>(k)]);
            }
            std::printf("\n");
        }
    }
}

void PrintEverything(const std::string& name, int status) {
    std::printf("== %s: status %d\n", name.c_str(), status);
    PrintBaseData("triple difference", 0, [](auto... p) { return GetTripDiffSol(p...); });
    for (int k = 0; k < GetFloatSolNum(); ++k) {
        PrintBaseData("float", 0, [k](auto... p) { return GetFloatSolBaseData(k, p...); });
        const int count = GetFloatSolAmbNum(k);
        PrintAmbiguities(count, [=](auto... p) { return GetFloatSolAmbListData(k, count, p...); });
        std::vector<double> variances(static_cast<std::size_t>(2 * count) + 1);
        GetFloatAmbCov(k, 2 * count, variances.data());
        Print("  variances", variances);
        PrintResiduals(
            GetFloatSolSatNum(k),
            [k](int n, int* s, int* p) { return GetFloatSolSatList(k, n, s, p); },
            [k](int s, int p, int kind) { return GetFloatSolResListSize(k, s, p, kind); },
            [k](auto... a) { return GetFloatSolResList(k, a...); });
    }
    for (int k = 0; k < GetFixedSolNum(); ++k) {
        PrintBaseData("fixed", 0, [k](auto... p) { return GetFixedSolBaseData(k, p...); });
        const int count = GetFixedSolAmbNum(k);
        double ratio = 0.0;
        PrintAmbiguities(count,
                         [&](auto... p) { return GetFixedSolAmbListData(k, count, &ratio, p...); });
        Print("  ratio", {ratio});
        PrintResiduals(
            GetFixedSolSatNum(k),
            [k](int n, int* s, int* p) { return GetFixedSolSatList(k, n, s, p); },
            [k](int s, int p, int kind) { return GetFixedSolResListSize(k, s, p, kind); },
            [k](auto... a) { return GetFixedSolResList(k, a...); });
    }
}

struct NamedScenario {
    std::string name;
    Scenario scenario;
};

std::vector<NamedScenario> Scenarios() {
    std::vector<NamedScenario> all;
    for (int mode = 0; mode <= 6; ++mode) {
        all.push_back({"four systems, mode " + std::to_string(mode),
                       vornel::bench::FourSystems(120, 30.0, mode)});
    }
    Scenario slips = vornel::bench::FourSystems(240, 15.0, 3);
    slips.slips.push_back({vornel::simulation::kRover, 5, 60, {3.0, -2.0}});
    slips.slips.push_back({vornel::simulation::kBase, 40, 90, {1.0, 4.0}});
    slips.gaps.push_back({vornel::simulation::kRover, 110, 70, 95});
    slips.glonassBias = 0.003;
    all.push_back({"slips, gaps and a GLONASS bias, mode 3", slips});
    Scenario periods = vornel::bench::FourSystems(600, 30.0, 1);
    periods.config.useBds = 0;
    all.push_back({"three periods, mode 1", periods});
    Scenario longBaseline = vornel::bench::FourSystems(360, 30.0, 6);
    longBaseline.baseline[0] = 40000.0;
    longBaseline.baseline[1] = 25000.0;
    all.push_back({"47 km, mode 6", longBaseline});
    return all;
}

}  // namespace

int main() {
    for (const NamedScenario& named : Scenarios()) {
        const int status =
            vornel::simulation::RunSession(vornel::simulation::Simulate(named.scenario));
        PrintEverything(named.name, status);
    }
    return 0;
}
