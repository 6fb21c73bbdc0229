// ANTEX: labelled lines; millimetres. Only the mean offsets are read, not the patterns.
#include "io/antennas.h"

#include <algorithm>

#include "io/text_fields.h"

namespace vornel::io {
namespace {

constexpr double kMetresPerMillimetre = 1e-3;

class AntennaReader {
  public:
    explicit AntennaReader(LineCursor& text) : cursor_(text) { data_.file = text.file(); }

    AntennaFile Read() {
        ReadVersion();
        while (cursor_.Next()) {
            ReadLine(HeaderLabel(cursor_.line()));
        }
        if (!headerEnded_ || inAntenna_) {
            cursor_.Refuse(InputFault::kTruncated,
                           headerEnded_ ? "the file ends within the antenna of line " +
                                              std::to_string(antenna_.line)
                                        : "the file ends before END OF HEADER",
                           "fetch the file again");
        }
        return std::move(data_);
    }

  private:
    void ReadVersion() {
        if (!cursor_.Next()) {
            throw InputError(InputFault::kEmpty, cursor_.file(), 0, "the file is empty",
                             "fetch the file again");
        }
        if (HeaderLabel(cursor_.line()) != "ANTEX VERSION / SYST") {
            cursor_.Refuse(InputFault::kWrongKind, "the first line is not that of an ANTEX file",
                           "give an ANTEX file");
        }
        const std::string_view text = Trim(Field(cursor_.line(), 0, 20));
        const auto version = ParseReal(text);
        const bool isRead = version && *version > 1.25 && *version < 1.45;
        if (!isRead) {
            cursor_.Refuse(version ? InputFault::kUnsupportedVersion : InputFault::kMalformed,
                           "ANTEX version " + Quote(text) + " is not read",
                           "the versions 1.3 and 1.4 are");
        }
        data_.version = *version;
    }

    void ReadLine(std::string_view label) {
        if (!headerEnded_) {
            ReadHeaderLine(label);
        } else if (label == "START OF ANTENNA") {
            if (inAntenna_) {
                cursor_.RefuseField("an antenna begins before END OF ANTENNA");
            }
            antenna_ = {};
            antenna_.line = static_cast<std::uint32_t>(cursor_.number());
            inAntenna_ = true;
        } else if (inAntenna_) {
            ReadAntennaLine(label);
        }
    }

    void ReadHeaderLine(std::string_view label) {
        if (label == "PCV TYPE / REFANT") {
            data_.relative = Field(cursor_.line(), 0, 1) == "R";
            data_.referenceAntenna = Trim(Field(cursor_.line(), 20, 20));
        } else if (label == "END OF HEADER") {
            headerEnded_ = true;
        } else if (label == "START OF ANTENNA") {
            cursor_.RefuseField("antennas begin before END OF HEADER");
        }
    }

    void ReadAntennaLine(std::string_view label) {
        if (label == "END OF ANTENNA") {
            if (inFrequency_) {
                cursor_.RefuseField("an antenna ends before END OF FREQUENCY");
            }
            data_.antennas.push_back(std::move(antenna_));
            inAntenna_ = false;
        } else if (label == "TYPE / SERIAL NO") {
            ReadType();
        } else if (label == "METH / BY / # / DATE") {
            antenna_.method = Trim(Field(cursor_.line(), 0, 20));
        } else if (label == "VALID FROM") {
            antenna_.validFrom = ReadTime();
        } else if (label == "VALID UNTIL") {
            antenna_.validUntil = ReadTime();
        } else if (label == "START OF FREQUENCY") {
            StartFrequency();
        } else if (label == "END OF FREQUENCY") {
            inFrequency_ = false;
        } else if (label == "NORTH / EAST / UP" && inFrequency_) {
            // Sections of standard deviations (FREQ RMS) have such a line too, which is not meant.
            ReadOffset();
        }
    }

    void ReadType() {
        const std::string_view line = cursor_.line().substr(0, 60);
        const std::string_view serial = Trim(Field(line, 20, 20));
        const bool satelliteCode =
            serial.size() == 3 && ParseSatellite(serial, GnssSystem::kGps).has_value();
        antenna_.satellite = satelliteCode && !IsBlank(Field(line, 40, 20));
        antenna_.serial = serial;
        if (antenna_.satellite) {
            antenna_.type = Trim(Field(line, 0, 20));
        } else {
            antenna_.type = Trim(Field(line, 0, 16));
            const std::string_view radome = Trim(Field(line, 16, 4));
            antenna_.radome = radome.empty() ? "NONE" : radome;
        }
        if (antenna_.type.empty()) {
            cursor_.RefuseField("an antenna without a type");
        }
    }

    // GPS time; dates before it began, as the first satellites have, are its origin.
    GpsTime ReadTime() const {
        const std::string_view line = cursor_.line().substr(0, 60);
        std::array<std::optional<int>, 5> parts;
        for (std::size_t i = 0; i < 5; ++i) {
            parts[i] = ParseInteger(Field(line, 6 * i, 6));
        }
        const auto second = ParseReal(Field(line, 30, 13));
        const bool dated = parts[0] && parts[1] && parts[2];
        if (dated && *parts[0] >= 1957 && *parts[0] < 1980) {
            return {0, 0.0};
        }
        const auto time = dated
                              ? FromCalendar({*parts[0], *parts[1], *parts[2], parts[3].value_or(0),
                                              parts[4].value_or(0), second.value_or(0.0)})
                              : std::nullopt;
        if (!time) {
            cursor_.RefuseField("no date and time in " + Quote(Trim(line)));
        }
        return *time;
    }

    void StartFrequency() {
        std::string code(Field(cursor_.line(), 3, 3));
        if (code.size() == 3 && code[0] == ' ') {
            code[0] = 'G';
        }
        if (code.size() == 3 && code[1] == ' ') {
            code[1] = '0';
        }
        if (code.size() != 3 || !SystemOfLetter(code[0]) || !IsDigit(code[1]) ||
            !IsDigit(code[2])) {
            cursor_.RefuseField("no frequency in " + Quote(Field(cursor_.line(), 3, 3)));
        }
        if (inFrequency_) {
            cursor_.RefuseField("a frequency begins before END OF FREQUENCY");
        }
        frequency_ = code;
        inFrequency_ = true;
    }

    void ReadOffset() {
        std::array<double, 3> millimetres{};
        for (std::size_t i = 0; i < 3; ++i) {
            const std::string_view field = Field(cursor_.line(), 10 * i, 10);
            const auto value = ParseReal(field);
            if (!value) {
                cursor_.RefuseField("the phase centre offset " + Quote(Trim(field)) +
                                    " is not a number");
            }
            millimetres[i] = *value;
        }
        antenna_.offsets.push_back({frequency_, millimetres[0] * kMetresPerMillimetre,
                                    millimetres[1] * kMetresPerMillimetre,
                                    millimetres[2] * kMetresPerMillimetre});
    }

    LineCursor& cursor_;
    AntennaFile data_;
    AntennaCalibration antenna_;
    std::string frequency_;
    bool headerEnded_ = false;
    bool inAntenna_ = false;
    bool inFrequency_ = false;
};

bool IsValidAt(const AntennaCalibration& antenna, const GpsTime& time) {
    return !(antenna.validFrom && time < *antenna.validFrom) &&
           !(antenna.validUntil && time > *antenna.validUntil);
}

}  // namespace

AntennaFile ReadAntennas(LineCursor& text) {
    return AntennaReader(text).Read();
}

const PhaseCentreOffset* FindOffset(const AntennaCalibration& antenna, std::string_view frequency) {
    const auto found =
        std::find_if(antenna.offsets.begin(), antenna.offsets.end(),
                     [&](const PhaseCentreOffset& o) { return o.frequency == frequency; });
    return found == antenna.offsets.end() ? nullptr : &*found;
}

const AntennaCalibration* FindReceiverAntenna(const AntennaFile& file, std::string_view type,
                                              std::string_view radome, std::string_view serial,
                                              const GpsTime& time) {
    const std::string_view wanted = radome.empty() ? "NONE" : radome;
    const AntennaCalibration* typeMean = nullptr;
    for (const AntennaCalibration& antenna : file.antennas) {
        const bool matches = !antenna.satellite && antenna.type == type &&
                             antenna.radome == wanted && IsValidAt(antenna, time);
        if (!matches) {
            continue;
        }
        if (antenna.serial.empty()) {
            typeMean = typeMean != nullptr ? typeMean : &antenna;
        } else if (antenna.serial == serial) {
            return &antenna;
        }
    }
    return typeMean;
}

}  // namespace vornel::io
