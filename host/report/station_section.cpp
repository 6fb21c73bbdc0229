#include <cmath>

#include "report/html.h"
#include "report/section_parts.h"
#include "report/sections.h"
#include "session/text.h"

namespace vornel::report {
namespace {

using engine::Solution;
using session::Vector3;
using solve::SolveResult;

std::string PositionText(const Vector3& xyz) {
    return Metres(xyz[0]) + "  " + Metres(xyz[1]) + "  " + Metres(xyz[2]);
}

std::string GeodeticText(const Vector3& xyz) {
    const session::Geodetic place = session::ToGeodetic(xyz);
    constexpr double kDegrees = 180.0 / M_PI;
    return Decimal(place.latitude * kDegrees, 8) + "\xC2\xB0  " +
           Decimal(place.longitude * kDegrees, 8) + "\xC2\xB0  " + Decimal(place.height, 4) + " m";
}

std::string OffsetText(const SolveResult& result, const session::AntennaChoice& a,
                       const Vector3& offset) {
    if (!a.found) {
        return kNone;
    }
    return Decimal(offset[0] * kToMm, 2) + "  " + Decimal(offset[1] * kToMm, 2) + "  " +
           Decimal(offset[2] * kToMm, 2) + (result.session.antennasApplied ? "" : " (not applied)");
}

std::string CalibrationText(const session::AntennaChoice& a) {
    if (!a.found) {
        return "none found";
    }
    std::string text = session::FileName(a.file) + ", radome " + a.usedRadome;
    text += a.serial.empty() ? ", mean of the type" : ", serial " + a.serial;
    text += a.method.empty() ? "" : ", " + a.method;
    return text + (a.relative ? ", relative" : "") +
           (a.firstForBoth ? ", the first frequency's offset for both" : "");
}

std::string PositionSource(const session::Station& station) {
    std::string text = session::PositionSourceName(station.positionSource);
    if (station.offFromCode) {
        text += ", " + Decimal(*station.offFromCode, 1) + " m from the code position";
    }
    return text;
}

}  // namespace

std::string StationSection(const SolveResult& result) {
    const session::Session& s = result.session;
    Table table("As used", {"", "Base", "Rover"});
    const auto row = [&](const char* name, const auto& give) {
        table.Row({name, give(s.base), give(s.rover)});
    };
    using session::Station;
    row("Marker", [](const Station& t) { return t.name; });
    row("Marker number", [](const Station& t) { return t.header.markerNumber; });
    row("Receiver", [](const Station& t) {
        return t.header.receiverType + "  " + t.header.receiverVersion +
               (t.header.receiverSerial.empty() ? "" : "  no. " + t.header.receiverSerial);
    });
    row("Antenna and radome", [](const Station& t) {
        return (t.antenna.type.empty() ? "not named" : t.antenna.type) + "  " + t.antenna.radome;
    });
    row("Antenna serial number", [](const Station& t) { return t.header.antennaSerial; });
    row("Antenna height (m)", [](const Station& t) {
        return Metres(t.antennaHeight) + (t.heightFromOption ? " (option)" : " (header)");
    });
    row("Antenna off the vertical, N E (m)", [](const Station& t) {
        return Metres(t.header.antennaNorth) + "  " + Metres(t.header.antennaEast);
    });
    row("Calibration", [](const Station& t) { return CalibrationText(t.antenna); });
    row("Phase centre L1, N E U (mm)",
        [&](const Station& t) { return OffsetText(result, t.antenna, t.antenna.offset1); });
    row("Phase centre L2, N E U (mm)",
        [&](const Station& t) { return OffsetText(result, t.antenna, t.antenna.offset2); });
    row("Marker used, X Y Z (m)", [](const Station& t) { return PositionText(t.position); });
    row("Position from", [](const Station& t) { return PositionSource(t); });
    row("Epochs in the files", [](const Station& t) {
        return std::to_string(t.epochs) + ", " + io::FormatTime(t.firstEpoch, 0) + " to " +
               io::FormatTime(t.lastEpoch, 0);
    });
    if (const Solution* best = result.outcome.Best()) {
        const Vector3 rover = session::Plus(s.base.position, best->vector);
        table.Row({"Marker by this solution, X Y Z (m)", kNone, PositionText(rover)}, "used");
        table.Row({"Latitude, longitude, height (WGS 84)", GeodeticText(s.base.position),
                   GeodeticText(rover)});
    }
    return Section(
        "stations", "Stations and antennas",
        table.Html() + (s.antennasApplied
                            ? Paragraph("Of the phase centre offsets the engine applies the third, "
                                        "up, of both frequencies, to all systems alike.",
                                        "note")
                            : Paragraph("No phase centre offsets were applied.", "note")));
}

}  // namespace vornel::report
