#include "files.h"

#include <array>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>

#include "calendar.h"

namespace vornel::rough {
namespace {

__attribute__((format(printf, 2, 3))) void Append(std::string& text, const char* format, ...) {
    std::array<char, 256> line;
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line.data(), line.size(), format, arguments);
    va_end(arguments);
    text.append(line.data(), static_cast<std::size_t>(length));
}

// A header line: 60 columns of content and its label.
void Header(std::string& text, const std::string& content, const char* label) {
    Append(text, "%-60.60s%-20s\n", content.c_str(), label);
}

std::string Printed(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Printed(const char* format, ...) {
    std::array<char, 256> line;
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line.data(), line.size(), format, arguments);
    va_end(arguments);
    return {line.data(), static_cast<std::size_t>(length)};
}

std::string NameOf(io::SatelliteId satellite) {
    return Printed("%c%02d", io::SystemLetter(satellite.system), satellite.number);
}

// Date and time whose seconds are written with seven digits behind the point.
Date WrittenDate(const io::GpsTime& time) {
    Date date = DateOf(time);
    date.second = std::round(date.second * 1e7) / 1e7;
    return date;
}

std::string HeaderTime(const io::GpsTime& time) {
    const Date d = WrittenDate(time);
    return Printed("%6d%6d%6d%6d%6d%13.7f     GPS", d.year, d.month, d.day, d.hour, d.minute,
                   d.second);
}

// F14.3, from the number of thousandths: quicker than printf, and there are millions.
void AppendThousandths(std::string& text, double value) {
    constexpr std::size_t kWidth = 14;
    std::array<char, kWidth> field;
    field.fill(' ');
    long long milli = std::llround(std::abs(value) * 1000.0);
    std::size_t at = kWidth;
    for (int digit = 0; digit < 3; ++digit, milli /= 10) {
        field[--at] = static_cast<char>('0' + milli % 10);
    }
    field[--at] = '.';
    do {
        field[--at] = static_cast<char>('0' + milli % 10);
        milli /= 10;
    } while (milli > 0 && at > 0);
    if (value < 0.0 && at > 0) {
        field[--at] = '-';
    }
    text.append(field.data(), kWidth);
}

void AppendRow(std::string& text, const io::Observations& data, const io::SatelliteRow& row) {
    Append(text, "%c%02d", io::SystemLetter(row.satellite.system), row.satellite.number);
    const std::size_t columns = data.SignalsOf(row).size();
    for (std::size_t c = 0; c < columns; ++c) {
        const double value = data.Value(row, c);
        if (std::isnan(value)) {
            text.append(14, ' ');
        } else {
            AppendThousandths(text, value);
        }
        const auto digit = [](std::uint8_t d) { return d == 0 ? ' ' : static_cast<char>('0' + d); };
        text.push_back(digit(data.LossOfLock(row, c)));
        text.push_back(digit(data.SignalStrength(row, c)));
    }
    text.erase(text.find_last_not_of(' ') + 1);
    text.push_back('\n');
}

void AppendSignals(std::string& text, const io::SignalTable& table) {
    constexpr std::size_t kPerLine = 13;
    for (std::size_t s = 0; s < io::kSystemCount; ++s) {
        for (std::size_t i = 0; i < table[s].size(); i += kPerLine) {
            std::string line = i == 0 ? Printed("%c  %3zu", io::kSystemLetters[s], table[s].size())
                                      : std::string(6, ' ');
            for (std::size_t k = i; k < table[s].size() && k < i + kPerLine; ++k) {
                line += ' ' + table[s][k].fileName;
            }
            Header(text, line, "SYS / # / OBS TYPES");
        }
    }
}

void AppendChannels(std::string& text, const std::vector<std::pair<int, int>>& channels) {
    constexpr std::size_t kPerLine = 8;
    for (std::size_t i = 0; i < channels.size(); i += kPerLine) {
        std::string line = i == 0 ? Printed("%3zu ", channels.size()) : std::string(4, ' ');
        for (std::size_t k = i; k < channels.size() && k < i + kPerLine; ++k) {
            line += Printed("R%02d %2d ", channels[k].first, channels[k].second);
        }
        Header(text, line, "GLONASS SLOT / FRQ #");
    }
}

void AppendObservationHeader(std::string& text, const io::Observations& data) {
    const io::StationHeader& h = data.stations.front();
    Header(text, "     3.04           OBSERVATION DATA    M", "RINEX VERSION / TYPE");
    Header(text,
           Printed("%-20.20s%-20.20s%-20.20s", h.programName.c_str(), h.runBy.c_str(),
                   h.fileDate.c_str()),
           "PGM / RUN BY / DATE");
    Header(text, h.markerName, "MARKER NAME");
    Header(text, h.markerNumber, "MARKER NUMBER");
    Header(text, h.markerType, "MARKER TYPE");
    Header(text, Printed("%-20.20s%-40.40s", h.observer.c_str(), h.agency.c_str()),
           "OBSERVER / AGENCY");
    Header(text,
           Printed("%-20.20s%-20.20s%-20.20s", h.receiverSerial.c_str(), h.receiverType.c_str(),
                   h.receiverVersion.c_str()),
           "REC # / TYPE / VERS");
    Header(text,
           Printed("%-20.20s%-16.16s%-4.4s", h.antennaSerial.c_str(), h.antennaType.c_str(),
                   h.antennaRadome.c_str()),
           "ANT # / TYPE");
    const auto p = h.approximatePosition.value_or(std::array<double, 3>{});
    Header(text, Printed("%14.4f%14.4f%14.4f", p[0], p[1], p[2]), "APPROX POSITION XYZ");
    Header(text, Printed("%14.4f%14.4f%14.4f", h.antennaHeight, h.antennaEast, h.antennaNorth),
           "ANTENNA: DELTA H/E/N");
    AppendSignals(text, data.signalTables.front());
    if (h.interval) {
        Header(text, Printed("%10.3f", *h.interval), "INTERVAL");
    }
    if (h.firstEpoch) {
        Header(text, HeaderTime(*h.firstEpoch), "TIME OF FIRST OBS");
    }
    if (h.lastEpoch) {
        Header(text, HeaderTime(*h.lastEpoch), "TIME OF LAST OBS");
    }
    AppendChannels(text, h.glonassChannels);
    Header(text, "", "END OF HEADER");
}

// D19.12, without the letter D for which some readers wait in vain.
std::string Number(double value) {
    return Printed("%19.12E", value);
}

void AppendNumbers(std::string& text, std::initializer_list<double> values) {
    text += "    ";
    for (const double value : values) {
        text += Number(value);
    }
    text.erase(text.find_last_not_of(' ') + 1);
    text.push_back('\n');
}

void AppendClock(std::string& text, char letter, int number, const io::GpsTime& reference,
                 std::initializer_list<double> values) {
    const Date d = DateOf(reference);
    Append(text, "%c%02d %04d %02d %02d %02d %02d %02d", letter, number, d.year, d.month, d.day,
           d.hour, d.minute, static_cast<int>(std::lround(d.second)));
    for (const double value : values) {
        text += Number(value);
    }
    text.push_back('\n');
}

void AppendKepler(std::string& text, const io::KeplerRecord& r) {
    AppendClock(text, io::SystemLetter(r.satellite.system), r.satellite.number,
                {r.tocWeek, r.tocSeconds}, {r.af0, r.af1, r.af2});
    AppendNumbers(text, {r.iode, r.crs, r.deltaN, r.m0});
    AppendNumbers(text, {r.cuc, r.eccentricity, r.cus, r.sqrtA});
    AppendNumbers(text, {r.toeSeconds, r.cic, r.omega0, r.cis});
    AppendNumbers(text, {r.i0, r.crc, r.omega, r.omegaDot});
    // BeiDou counts weeks from 2006-01-01, GPS week 1356.
    constexpr int kFirstBeiDouWeek = 1356;
    switch (r.satellite.system) {
        case io::GnssSystem::kBeiDou:
            AppendNumbers(text,
                          {r.idot, 0.0, static_cast<double>(r.toeWeek - kFirstBeiDouWeek), 0.0});
            AppendNumbers(
                text, {r.accuracy, static_cast<double>(r.health), r.groupDelay1, r.groupDelay2});
            AppendNumbers(text, {r.transmitTime, r.iodc});
            break;
        case io::GnssSystem::kGalileo:
            AppendNumbers(text, {r.idot, static_cast<double>(r.dataSources),
                                 static_cast<double>(r.toeWeek), 0.0});
            AppendNumbers(
                text, {r.accuracy, static_cast<double>(r.health), r.groupDelay1, r.groupDelay2});
            AppendNumbers(text, {r.transmitTime});
            break;
        default:
            AppendNumbers(text, {r.idot, static_cast<double>(r.codesOnL2),
                                 static_cast<double>(r.toeWeek), static_cast<double>(r.l2PFlag)});
            AppendNumbers(text, {r.accuracy, static_cast<double>(r.health), r.groupDelay1, r.iodc});
            AppendNumbers(text, {r.transmitTime, r.fitInterval});
    }
}

void AppendGlonass(std::string& text, const io::GlonassRecord& r) {
    AppendClock(text, 'R', r.slot, {r.referenceWeek, r.referenceSeconds},
                {r.clockBias, r.clockDrift, r.messageFrameTime});
    const std::array<double, 3> last = {static_cast<double>(r.health),
                                        static_cast<double>(r.channel), r.age};
    for (std::size_t c = 0; c < 3; ++c) {
        AppendNumbers(text, {r.position[c], r.velocity[c], r.acceleration[c], last[c]});
    }
}

void AppendIonosphere(std::string& text, const io::IonosphereSet& set) {
    const char* name = set.system == io::GnssSystem::kBeiDou ? "BDS" : "GPS";
    const auto line = [&](char letter, const std::array<double, 4>& v) {
        Header(text, Printed("%s%c %12.4E%12.4E%12.4E%12.4E", name, letter, v[0], v[1], v[2], v[3]),
               "IONOSPHERIC CORR");
    };
    line('A', set.alpha);
    line('B', set.beta);
}

void WriteFile(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

}  // namespace

std::string RinexObservations(const io::Observations& data) {
    std::string text;
    text.reserve(data.values.size() * 17 + 10000);
    AppendObservationHeader(text, data);
    for (const io::ObservationEpoch& epoch : data.epochs) {
        const Date d = WrittenDate(epoch.time);
        Append(text, "> %04d %02d %02d %02d %02d%11.7f  %c%3u\n", d.year, d.month, d.day, d.hour,
               d.minute, d.second, epoch.powerFailure ? '1' : '0', epoch.satelliteCount);
        for (const io::SatelliteRow& row : data.SatellitesOf(epoch)) {
            AppendRow(text, data, row);
        }
    }
    return text;
}

std::string RinexNavigation(const io::Navigation& navigation) {
    std::string text;
    Header(text, "     3.04           N: GNSS NAV DATA    M: MIXED", "RINEX VERSION / TYPE");
    Header(text, "rough world", "PGM / RUN BY / DATE");
    for (const io::IonosphereSet& set : navigation.ionosphere) {
        AppendIonosphere(text, set);
    }
    if (navigation.leapSeconds) {
        Header(text, Printed("%6d", *navigation.leapSeconds), "LEAP SECONDS");
    }
    Header(text, "", "END OF HEADER");
    for (const io::KeplerRecord& record : navigation.kepler) {
        AppendKepler(text, record);
    }
    for (const io::GlonassRecord& record : navigation.glonass) {
        AppendGlonass(text, record);
    }
    return text;
}

std::string Sp3(const io::PreciseOrbits& orbits) {
    std::string text;
    const io::GpsTime& first = orbits.epochs.front();
    const Date d = DateOf(first);
    Append(text, "#dP%04d %2d %2d %2d %2d %11.8f %7zu ORBIT %-5s FIT %4s\n", d.year, d.month, d.day,
           d.hour, d.minute, d.second, orbits.epochs.size(), orbits.coordinateSystem.c_str(),
           orbits.agency.c_str());
    constexpr int kModifiedJulianOrigin = 44244;  // of GPS time
    const int days = first.week * 7 + static_cast<int>(first.seconds / kDay);
    Append(text, "## %4d %15.8f %14.8f %5d %15.13f\n", first.week, first.seconds, orbits.interval,
           kModifiedJulianOrigin + days, std::fmod(first.seconds, kDay) / kDay);
    constexpr std::size_t kPerLine = 17;
    const std::size_t lines = (orbits.satellites.size() + kPerLine - 1) / kPerLine;
    for (const bool accuracies : {false, true}) {
        for (std::size_t line = 0; line < lines; ++line) {
            if (accuracies) {
                text += "++       ";
            } else if (line == 0) {
                Append(text, "+  %3zu   ", orbits.satellites.size());
            } else {
                text += "+        ";
            }
            for (std::size_t i = line * kPerLine; i < (line + 1) * kPerLine; ++i) {
                text += accuracies || i >= orbits.satellites.size()
                            ? std::string("  0")
                            : NameOf(orbits.satellites[i].satellite);
            }
            text.push_back('\n');
        }
    }
    text +=
        "%c M  cc GPS ccc cccc cccc cccc cccc ccccc ccccc ccccc ccccc\n"
        "%c cc cc ccc ccc cccc cccc cccc cccc ccccc ccccc ccccc ccccc\n"
        "%f  1.2500000  1.025000000  0.00000000000  0.000000000000000\n"
        "%f  0.0000000  0.000000000  0.00000000000  0.000000000000000\n"
        "%i    0    0    0    0      0      0      0      0         0\n"
        "%i    0    0    0    0      0      0      0      0         0\n"
        "/* simulated\n";
    std::vector<std::vector<std::string>> lineOf(orbits.epochs.size());
    for (const io::OrbitSeries& series : orbits.satellites) {
        for (const io::OrbitPoint& p : series.points) {
            lineOf[p.epoch].push_back(
                Printed("P%s%14.6f%14.6f%14.6f%14.6f\n", NameOf(series.satellite).c_str(),
                        p.position[0] / 1000.0, p.position[1] / 1000.0, p.position[2] / 1000.0,
                        std::isnan(p.clock) ? 999999.999999 : p.clock * 1e6));
        }
    }
    for (std::size_t e = 0; e < orbits.epochs.size(); ++e) {
        const Date date = DateOf(orbits.epochs[e]);
        Append(text, "*  %04d %2d %2d %2d %2d %11.8f\n", date.year, date.month, date.day, date.hour,
               date.minute, date.second);
        for (const std::string& line : lineOf[e]) {
            text += line;
        }
    }
    return text + "EOF\n";
}

std::string Antex(const io::AntennaFile& antennas) {
    std::string text;
    Header(text, Printed("%8.1f            M", antennas.version), "ANTEX VERSION / SYST");
    Header(text, "A", "PCV TYPE / REFANT");
    Header(text, "", "END OF HEADER");
    for (const io::AntennaCalibration& a : antennas.antennas) {
        Header(text, "", "START OF ANTENNA");
        Header(
            text,
            Printed("%-16.16s%-4.4s%-20.20s", a.type.c_str(), a.radome.c_str(), a.serial.c_str()),
            "TYPE / SERIAL NO");
        Header(text, Printed("%-20.20s%-20.20s%6d", a.method.c_str(), "SIMULATED", 1),
               "METH / BY / # / DATE");
        Header(text, "     0.0", "DAZI");
        Header(text, "     0.0  90.0  90.0", "ZEN1 / ZEN2 / DZEN");
        Header(text, Printed("%6zu", a.offsets.size()), "# OF FREQUENCIES");
        for (const io::PhaseCentreOffset& o : a.offsets) {
            Header(text, "   " + o.frequency, "START OF FREQUENCY");
            Header(text, Printed("%10.2f%10.2f%10.2f", o.north * 1e3, o.east * 1e3, o.up * 1e3),
                   "NORTH / EAST / UP");
            text += "   NOAZI    0.00    0.00\n";
            Header(text, "   " + o.frequency, "END OF FREQUENCY");
        }
        Header(text, "", "END OF ANTENNA");
    }
    return text;
}

std::vector<std::string> WriteSession(const SimulatedSession& session, const std::string& folder) {
    const std::filesystem::path path(folder);
    std::filesystem::create_directories(path);
    std::vector<std::string> names;
    std::map<std::string, int> count;
    for (const SimulatedStation& station : session.stations) {
        const std::string& site = station.observations.station().markerName;
        names.push_back(site + "_" + std::to_string(++count[site]) + ".rnx");
        WriteFile(path / names.back(), RinexObservations(station.observations));
    }
    WriteFile(path / "navigation.rnx", RinexNavigation(session.navigation));
    if (session.preciseOrbits) {
        WriteFile(path / "orbits.sp3", Sp3(*session.preciseOrbits));
    }
    if (session.antennas) {
        WriteFile(path / "antennas.atx", Antex(*session.antennas));
    }
    return names;
}

}  // namespace vornel::rough
