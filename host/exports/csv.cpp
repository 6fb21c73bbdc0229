#include <vector>

#include "exports/text.h"
#include "exports/writers.h"

namespace vornel::exports {
namespace {

// Quoted where a reader could take it for more or less than one field.
std::string Field(const std::string& text) {
    const std::string clean = CleanText(text);
    if (clean.find_first_of(",\"'; ") == std::string::npos) {
        return clean;
    }
    std::string quoted = "\"";
    for (const char c : clean) {
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    }
    return quoted + "\"";
}

std::string OptionalNumber(const std::optional<double>& value, int decimals) {
    return value ? Fixed(*value, decimals) : "";
}

std::string Hashes(const ExportSet& set, const ExportVector& vector) {
    std::string text;
    const auto add = [&](const InputFile& input) {
        text += text.empty() ? "" : ";";
        text += CleanText(input.sha256);
    };
    for (const std::size_t input : vector.inputs) {
        add(set.inputs[input]);
    }
    if (vector.inputs.empty()) {
        for (const InputFile& input : set.inputs) {
            add(input);
        }
    }
    return text;
}

std::string Line(const ExportSet& set, const ExportVector& vector,
                 const std::vector<std::string>& names) {
    std::vector<std::string> fields{Field(names[vector.from]), Field(names[vector.to]),
                                    Field(vector.session), IsoTime(vector.start, 0),
                                    IsoTime(vector.end, 0)};
    for (const double value : vector.vector) {
        fields.push_back(Fixed(value, 6));
    }
    for (const std::size_t i : {0U, 1U, 2U, 4U, 5U, 8U}) {
        fields.push_back(Scientific(vector.covariance[i], 14));
    }
    fields.push_back(Field(vector.kind));
    fields.push_back(OptionalNumber(vector.ratio, 2));
    fields.push_back(Fixed(vector.sigmaScale, 4));
    for (std::size_t i = 0; i < 3; ++i) {
        fields.push_back(vector.residualNeu ? Fixed((*vector.residualNeu)[i], 5) : "");
    }
    fields.push_back(OptionalNumber(vector.statistic, 3));
    fields.push_back(vector.isUsed ? "1" : "0");
    fields.push_back(Field(vector.grade));
    fields.push_back(Field(vector.id));
    fields.push_back(Field(set.frame));
    fields.push_back(SigmaKindName(set.sigmaKind));
    fields.push_back(Hashes(set, vector));
    std::string line;
    for (const std::string& field : fields) {
        line += field + ",";
    }
    line.back() = '\r';
    return line + "\n";
}

}  // namespace

// Times are GPS time; the middle of start and end is the epoch of the vector.
ExportedFile WriteCsv(const ExportSet& set) {
    CheckSet(set);
    const FittedNames fitted = FitNames(StationNames(set), AnyName("CSV"));
    ExportedFile file;
    file.warnings = fitted.warnings;
    file.bytes =
        "from,to,session,start,end,dx,dy,dz,cxx,cxy,cxz,cyy,cyz,czz,kind,ratio,sigma_scale,"
        "residual_n,residual_e,residual_u,w,used,grade,id,frame,sigma_kind,inputs_sha256\r\n";
    for (const ExportVector& vector : set.vectors) {
        file.bytes += Line(set, vector, fitted.names);
    }
    return file;
}

}  // namespace vornel::exports
