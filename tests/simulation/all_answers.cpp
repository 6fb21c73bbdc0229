#include "simulation/all_answers.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <vector>

#include "VornelBlCore.h"

namespace vornel::simulation {

namespace {

constexpr int kModels = 6;

class Text {
  public:
    [[gnu::format(printf, 2, 3)]] void Add(const char* format, ...) {
        char piece[256];
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(piece, sizeof piece, format, arguments);
        va_end(arguments);
        text_ += piece;
    }
    void AddLine(const char* name, const std::vector<double>& values) {
        text_ += name;
        for (const double value : values) {
            Add(" %a", value);
        }
        text_ += '\n';
    }
    std::string Whole() && { return std::move(text_); }

  private:
    std::string text_;
};

// The base data of a solution: `query` takes the 31 pointers.
template <class Query>
void AddBaseData(Text& text, const char* name, int modeAsked, Query query) {
    int mode = modeAsked, dof = 0;
    std::vector<double> d(29, 0.0);
    double* p = d.data();
    const int found =
        query(&mode, p, p + 1, p + 2, p + 3, p + 4, p + 5, &dof, p + 6, p + 7, p + 8, p + 9, p + 10,
              p + 11, p + 12, p + 13, p + 14, p + 15, p + 16, p + 17, p + 18, p + 19, p + 20,
              p + 21, p + 22, p + 23, p + 24, p + 25, p + 26, p + 27, p + 28);
    text.Add("%s found %d mode %d dof %d\n", name, found, mode, dof);
    text.AddLine("  values", d);
}

// The ambiguities of a solution: `query` takes the 16 arrays.
template <class Query>
void AddAmbiguities(Text& text, int count, Query query) {
    const auto n = static_cast<std::size_t>(count);
    std::array<std::vector<int>, 10> i;
    std::array<std::vector<double>, 6> d;
    for (auto& list : i) {
        list.assign(n + 1, 0);
    }
    for (auto& list : d) {
        list.assign(n + 1, 0.0);
    }
    const int written =
        query(i[0].data(), i[1].data(), i[2].data(), i[3].data(), i[4].data(), d[0].data(),
              i[5].data(), d[1].data(), d[2].data(), d[3].data(), i[6].data(), i[7].data(),
              i[8].data(), i[9].data(), d[4].data(), d[5].data());
    text.Add("  ambiguities %d of %d\n", written, count);
    for (std::size_t k = 0; k < n; ++k) {
        text.Add("  ambiguity %d %d epochs %d %d weeks %d %d rows %d %d rejected %d %d\n", i[0][k],
                 i[1][k], i[2][k], i[3][k], i[4][k], i[5][k], i[6][k], i[7][k], i[8][k], i[9][k]);
        text.AddLine("   ", {d[0][k], d[1][k], d[2][k], d[3][k], d[4][k], d[5][k]});
    }
}

// The residuals of one satellite: `size` takes the kind, `list` kind, count and three arrays.
template <class Size, class List>
void AddResiduals(Text& text, int system, int prn, Size size, List list) {
    for (int kind = 0; kind < 2; ++kind) {
        const int count = size(kind);
        std::vector<int> weeks(static_cast<std::size_t>(count) + 1), values(weeks.size());
        std::vector<double> seconds(weeks.size());
        const int written = list(kind, count, weeks.data(), seconds.data(), values.data());
        text.Add("  residuals %d %d %d, %d of %d:", system, prn, kind, written, count);
        for (std::size_t k = 0; k + 1 < weeks.size(); ++k) {
            text.Add(" %d/%a/%d", weeks[k], seconds[k], values[k]);
        }
        text.Add("\n");
    }
}

struct SatelliteList {
    int written = 0;
    std::vector<int> systems, prns;
};

// `query` takes count and two arrays.
template <class Query>
SatelliteList Satellites(Text& text, int count, Query query) {
    SatelliteList list;
    list.systems.resize(static_cast<std::size_t>(count) + 1);
    list.prns.resize(list.systems.size());
    list.written = query(count, list.systems.data(), list.prns.data());
    text.Add("  satellites %d of %d\n", list.written, count);
    list.systems.resize(static_cast<std::size_t>(list.written));
    list.prns.resize(list.systems.size());
    return list;
}

void AddFloat(Text& text, int k) {
    AddBaseData(text, "float", 0, [k](auto... p) { return GetFloatSolBaseData(k, p...); });
    const int count = GetFloatSolAmbNum(k);
    AddAmbiguities(text, count, [=](auto... p) { return GetFloatSolAmbListData(k, count, p...); });
    std::vector<double> variances(static_cast<std::size_t>(2 * count) + 1);
    const int written = GetFloatAmbCov(k, 2 * count, variances.data());
    text.Add("  variances %d", written);
    text.AddLine("", variances);
    const SatelliteList list = Satellites(text, GetFloatSolSatNum(k), [k](int n, int* s, int* p) {
        return GetFloatSolSatList(k, n, s, p);
    });
    for (std::size_t i = 0; i < list.systems.size(); ++i) {
        const int s = list.systems[i], p = list.prns[i];
        AddResiduals(
            text, s, p, [=](int kind) { return GetFloatSolResListSize(k, s, p, kind); },
            [=](auto... a) { return GetFloatSolResList(k, s, p, a...); });
    }
}

void AddFixed(Text& text, int k) {
    AddBaseData(text, "fixed", 0, [k](auto... p) { return GetFixedSolBaseData(k, p...); });
    const int count = GetFixedSolAmbNum(k);
    double ratio = 0.0;
    AddAmbiguities(text, count,
                   [&](auto... p) { return GetFixedSolAmbListData(k, count, &ratio, p...); });
    text.AddLine("  ratio", {ratio});
    const SatelliteList list = Satellites(text, GetFixedSolSatNum(k), [k](int n, int* s, int* p) {
        return GetFixedSolSatList(k, n, s, p);
    });
    for (std::size_t i = 0; i < list.systems.size(); ++i) {
        const int s = list.systems[i], p = list.prns[i];
        AddResiduals(
            text, s, p, [=](int kind) { return GetFixedSolResListSize(k, s, p, kind); },
            [=](auto... a) { return GetFixedSolResList(k, s, p, a...); });
    }
}

// What is asked by solve model. Float residuals have no list of satellites of their own here: those
// of the fixed solution serve.
void AddModel(Text& text, int mode) {
    AddBaseData(text, "float of model", mode,
                [](auto... p) { return GetModeFloatSolBaseData(p...); });
    AddBaseData(text, "fixed of model", mode,
                [](auto... p) { return GetModeFixedSolBaseData(p...); });
    text.Add("  float satellites %d\n", GetModeFloatSolSatNum(mode));
    const SatelliteList list =
        Satellites(text, GetModeFixedSolSatNum(mode),
                   [mode](int n, int* s, int* p) { return GetModeFixedSolSatList(mode, n, s, p); });
    for (std::size_t i = 0; i < list.systems.size(); ++i) {
        const int s = list.systems[i], p = list.prns[i];
        AddResiduals(
            text, s, p, [=](int kind) { return GetModeFloatSolResListSize(mode, s, p, kind); },
            [=](auto... a) { return GetModeFloatSolResList(mode, s, p, a...); });
        AddResiduals(
            text, s, p, [=](int kind) { return GetModeFixedSolResListSize(mode, s, p, kind); },
            [=](auto... a) { return GetModeFixedSolResList(mode, s, p, a...); });
    }
}

// Number of solutions, and their modes in the order filed.
void AddModes(Text& text, const char* name, int count, void (*query)(int, int*)) {
    std::vector<int> modes(static_cast<std::size_t>(count) + 1);
    query(count, modes.data());
    text.Add("%s solutions %d:", name, count);
    for (const int mode : modes) {
        text.Add(" %d", mode);
    }
    text.Add("\n");
}

void AddSummary(Text& text) {
    int model = 0, code = 0;
    bool flags[3] = {};
    double d[10] = {};
    GetSolveResultsBaseData(&model, &flags[0], &flags[1], &flags[2], &code, nullptr, nullptr, &d[0],
                            &d[1], &d[2], &d[3], &d[4], &d[5], &d[6], &d[7], &d[8], &d[9]);
    text.Add("solve model %d flags %d %d %d code %d\n", model, flags[0], flags[1], flags[2], code);
    text.AddLine("  values", std::vector<double>(d, d + 10));
}

}  // namespace

std::string AllAnswers(int status) {
    Text text;
    text.Add("status %d\n", status);
    AddSummary(text);
    AddBaseData(text, "triple difference", 0, [](auto... p) { return GetTripDiffSol(p...); });
    AddModes(text, "float", GetFloatSolNum(), &GetFloatSolNumAndMode);
    AddModes(text, "fixed", GetFixedSolNum(), &GetFixedSolNumAndMode);
    for (int k = 0; k < GetFloatSolNum(); ++k) {
        AddFloat(text, k);
    }
    for (int k = 0; k < GetFixedSolNum(); ++k) {
        AddFixed(text, k);
    }
    for (int mode = 1; mode <= kModels; ++mode) {
        AddModel(text, mode);
    }
    return std::move(text).Whole();
}

}  // namespace vornel::simulation
