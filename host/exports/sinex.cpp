#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <vector>

#include "exports/text.h"
#include "exports/writers.h"

namespace vornel::exports {
namespace {

constexpr const char* kSolution = "----";

// Stations held without error get this standard deviation (m), and with them, as they stand in one
// frame, all others: differences keep their covariances, and the matrix can be inverted.
constexpr double kTightSigma = 1e-6;

// Three capital letters or digits.
std::string Agency(const std::string& name) {
    std::string code;
    for (const char c : AsciiText(name)) {
        if (c >= 'a' && c <= 'z') {
            code += static_cast<char>(c - 'a' + 'A');
        } else if ((c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) {
            code += c;
        }
    }
    return code.empty() ? "XXX" : Left(code.substr(0, 3), 3);
}

// Degrees, minutes, seconds: I3 1X I2 1X F4.1. The sign stands before the degrees, of which there may
// be none.
std::string Angle(double degrees) {
    const auto tenths = std::lround(std::abs(degrees) * 36000.0) % (360L * 36000L);
    const std::string sign = degrees < 0.0 && tenths > 0 ? "-" : "";
    return Right(sign + std::to_string(tenths / 36000), 3) + " " +
           Right(std::to_string(tenths / 600 % 60), 2) + " " +
           Right(Fixed(static_cast<double>(tenths % 600) / 10.0, 1), 4);
}

// Cut at blanks where there are any.
std::vector<std::string> Wrapped(std::string text, std::size_t width) {
    std::vector<std::string> parts;
    while (text.size() > width) {
        const std::size_t blank = text.rfind(' ', width);
        const bool isBlank = blank != std::string::npos && blank > 0;
        const std::size_t end = isBlank ? blank : width;
        parts.push_back(text.substr(0, end));
        text.erase(0, isBlank ? end + 1 : end);
    }
    parts.push_back(text);
    return parts;
}

class Writer {
  public:
    explicit Writer(const ExportSet& set)
        : set_(set),
          codes_(FitNames(StationNames(set), {"SINEX", 4, true, "", false})),
          count_(3 * set.stations.size()) {
        start_ = end_ = set.epoch;
        for (const ExportVector& vector : set.vectors) {
            start_ = std::min(start_, vector.start);
            end_ = std::max(end_, vector.end);
        }
        const bool isAnyHeld = std::any_of(set.stations.begin(), set.stations.end(),
                                           [](const ExportStation& s) { return s.isHeld; });
        tight_ = isAnyHeld ? kTightSigma * kTightSigma : 0.0;
    }

    ExportedFile Write() {
        const std::string created = SinexTime(*io::FromCalendar(set_.createdUtc));
        const std::string agency = Agency(set_.agency);
        Line("%=SNX 2.02 " + agency + " " + created + " " + agency + " " + SinexTime(start_) + " " +
             SinexTime(end_) + " P " + Number(count_) + " " + ConstraintCode() + " S");
        Reference();
        Comments();
        Sites();
        Equipment();
        Epochs();
        Estimates("SOLUTION/ESTIMATE", false);
        if (tight_ > 0.0) {
            Estimates("SOLUTION/APRIORI", true);
        }
        Matrix();
        if (tight_ > 0.0) {
            TightMatrix();
        }
        Line("%ENDSNX");
        file_.warnings.insert(file_.warnings.begin(), codes_.warnings.begin(),
                              codes_.warnings.end());
        return std::move(file_);
    }

  private:
    void Line(const std::string& line) { file_.bytes += line + "\n"; }

    // The format puts a blank before every field.
    void Line(std::initializer_list<std::string> fields) {
        for (const std::string& field : fields) {
            file_.bytes += ' ';
            file_.bytes += field;
        }
        file_.bytes += '\n';
    }

    static std::string Number(std::size_t value) {
        std::string text = std::to_string(value);
        return std::string(5 - std::min<std::size_t>(5, text.size()), '0') + text;
    }

    const char* ConstraintCode() const {
        return set_.constraint == Constraint::kTight         ? "0"
               : set_.constraint == Constraint::kSignificant ? "1"
                                                             : "2";
    }

    void Reference() {
        const auto item = [&](const char* what, const std::string& text) {
            Line({Left(what, 18), AsciiText(text).substr(0, 60)});
        };
        Line("+FILE/REFERENCE");
        item("DESCRIPTION", set_.title.empty() ? "GNSS network" : set_.title);
        item("OUTPUT", "Positions of marks, " + set_.frame);
        item("SOFTWARE", set_.software.name + " " + set_.software.version);
        item("INPUT", std::to_string(set_.inputs.size()) + " files, listed in FILE/COMMENT");
        Line("-FILE/REFERENCE");
    }

    void Comments() {
        Line("+FILE/COMMENT");
        std::vector<std::string> lines = Provenance(set_);
        lines.insert(lines.end(), codes_.warnings.begin(), codes_.warnings.end());
        for (const std::string& line : lines) {
            for (const std::string& part : Wrapped(AsciiText(line), 79)) {
                Line({part});
            }
        }
        Line("-FILE/COMMENT");
    }

    void Sites() {
        Line("+SITE/ID");
        Line("*CODE PT __DOMES__ T _STATION DESCRIPTION__ _LONGITUDE_ _LATITUDE__ HEIGHT_");
        for (std::size_t s = 0; s < set_.stations.size(); ++s) {
            const session::Geodetic place = session::ToGeodetic(set_.stations[s].position);
            double longitude = place.longitude * 180.0 / M_PI;
            longitude += longitude < 0.0 ? 360.0 : 0.0;
            const std::string name = AsciiText(set_.stations[s].name);
            if (name.size() > 22) {
                file_.warnings.push_back("SINEX: of the name " + CleanText(set_.stations[s].name) +
                                         " 22 characters stand in SITE/ID");
            }
            Line({Site(s), "---------", "P", Left(name.substr(0, 22), 22), Angle(longitude),
                  Angle(place.latitude * 180.0 / M_PI), Right(Fixed(place.height, 1), 7)});
        }
        Line("-SITE/ID");
    }

    // Code and point.
    std::string Site(std::size_t s) const { return Left(codes_.names[s], 4) + "  A"; }

    // The first fields of the lines that give something for a time.
    std::string During(std::size_t s) const {
        std::string text = Site(s);
        for (const std::string& field :
             {std::string(kSolution), std::string("P"), SinexTime(start_), SinexTime(end_)}) {
            text += ' ';
            text += field;
        }
        return text;
    }

    static std::string Text(const std::string& text, std::size_t width) {
        return Left(AsciiText(text.empty() ? std::string(width, '-') : text).substr(0, width),
                    width);
    }

    void Equipment() {
        Line("+SITE/RECEIVER");
        for (std::size_t s = 0; s < set_.stations.size(); ++s) {
            const StationEquipment& equipment = set_.stations[s].equipment;
            Line({During(s), Text(equipment.receiver, 20), Text(equipment.receiverSerial, 5),
                  Text(equipment.firmware, 11)});
        }
        Line("-SITE/RECEIVER");
        Line("+SITE/ANTENNA");
        for (std::size_t s = 0; s < set_.stations.size(); ++s) {
            const StationEquipment& equipment = set_.stations[s].equipment;
            Line({During(s), Text(equipment.antenna, 20), Text(equipment.antennaSerial, 5)});
        }
        Line("-SITE/ANTENNA");
        Line("+SITE/ECCENTRICITY");
        for (std::size_t s = 0; s < set_.stations.size(); ++s) {
            const double height = set_.stations[s].equipment.antennaHeight;
            Line({During(s), "UNE", Right(Fixed(height, 4), 8), Right("0.0000", 8),
                  Right("0.0000", 8)});
        }
        Line("-SITE/ECCENTRICITY");
    }

    void Epochs() {
        Line("+SOLUTION/EPOCHS");
        Line("*CODE PT SOLN T _DATA_START_ __DATA_END__ _MEAN_EPOCH_");
        for (std::size_t s = 0; s < set_.stations.size(); ++s) {
            Line({During(s), SinexTime(set_.epoch)});
        }
        Line("-SOLUTION/EPOCHS");
    }

    // Index of an estimate, counting from 1: of all, or of those of held stations.
    void Estimates(const std::string& block, bool ofHeld) {
        Line("+" + block);
        Line("*INDEX TYPE__ CODE PT SOLN _REF_EPOCH__ UNIT S __ESTIMATED VALUE____ _STD_DEV___");
        std::size_t index = 0;
        for (std::size_t s = 0; s < set_.stations.size(); ++s) {
            const ExportStation& station = set_.stations[s];
            if (ofHeld && !station.isHeld) {
                continue;
            }
            for (std::size_t i = 0; i < 3; ++i) {
                const double sigma = ofHeld ? kTightSigma : std::sqrt(Covariance(s, s, i, i));
                const std::string type{'S', 'T', 'A', "XYZ"[i], ' ', ' '};
                Line({Right(std::to_string(++index), 5), type, Site(s), kSolution,
                      SinexTime(set_.epoch), "m   ", station.isHeld ? "0" : ConstraintOfFree(),
                      Right(Scientific(station.position[i], 14), 21),
                      Right(Scientific(sigma, 5), 11)});
            }
        }
        Line("-" + block);
    }

    const char* ConstraintOfFree() const {
        return set_.constraint == Constraint::kSignificant ? "1" : "2";
    }

    double Covariance(std::size_t a, std::size_t b, std::size_t i, std::size_t j) const {
        return set_.positionCovariance[a * set_.stations.size() + b][3 * i + j] +
               (i == j ? tight_ : 0.0);
    }

    void Matrix() {
        Line("+SOLUTION/MATRIX_ESTIMATE L COVA");
        Line("*PARA1 PARA2 ____PARA2+0__________ ____PARA2+1__________ ____PARA2+2__________");
        for (std::size_t row = 0; row < count_; ++row) {
            for (std::size_t column = 0; column <= row; column += 3) {
                std::string line = Right(std::to_string(row + 1), 6);
                line += Right(std::to_string(column + 1), 6);
                for (std::size_t k = column; k < std::min(column + 3, row + 1); ++k) {
                    const double value = Covariance(row / 3, k / 3, row % 3, k % 3);
                    line += Right(Scientific(value, 14), 22);
                }
                Line(line);
            }
        }
        Line("-SOLUTION/MATRIX_ESTIMATE L COVA");
    }

    void TightMatrix() {
        Line("+SOLUTION/MATRIX_APRIORI L COVA");
        Line("*PARA1 PARA2 ____PARA2+0__________ ____PARA2+1__________ ____PARA2+2__________");
        const auto held = static_cast<std::size_t>(
            std::count_if(set_.stations.begin(), set_.stations.end(),
                          [](const ExportStation& s) { return s.isHeld; }));
        for (std::size_t row = 1; row <= 3 * held; ++row) {
            const std::string index = Right(std::to_string(row), 5);
            Line({index, index, Right(Scientific(tight_, 14), 21)});
        }
        Line("-SOLUTION/MATRIX_APRIORI L COVA");
    }

    const ExportSet& set_;
    FittedNames codes_;
    std::size_t count_;
    io::GpsTime start_, end_;
    double tight_ = 0.0;  // m^2
    ExportedFile file_;
};

}  // namespace

ExportedFile WriteSinex(const ExportSet& set) {
    CheckSet(set);
    if (set.positionCovariance.empty()) {
        throw ExportError("SINEX holds positions with their covariances: there are none");
    }
    if (set.stations.size() > 33333) {
        throw ExportError("SINEX numbers no more than 99999 estimates, those of 33333 stations");
    }
    const std::size_t count = set.stations.size();
    for (std::size_t s = 0; s < count; ++s) {
        const Matrix3& block = set.positionCovariance[s * count + s];
        if (!set.stations[s].isHeld && (block[0] <= 0.0 || block[4] <= 0.0 || block[8] <= 0.0)) {
            throw ExportError("station " + CleanText(set.stations[s].name) +
                              " has no covariance, and is not held either");
        }
    }
    return Writer(set).Write();
}

}  // namespace vornel::exports
