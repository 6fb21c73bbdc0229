#include "report/drawings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "report/html.h"
#include "session/text.h"

namespace vornel::report {
namespace {

using engine::System;
using session::Format;

// "sG", "sR", "sC", "sE": the class that gives a system its colour and dashes.
std::string SystemClass(engine::System system) {
    return std::string("s") + engine::LetterOf(system);
}

struct Point {
    double x = 0.0;
    double y = 0.0;
};

double Distance(const Point& a, const Point& b) {
    return std::hypot(a.x - b.x, a.y - b.y);
}

// ---- sky ----------------------------------------------------------------------------------------

constexpr double kSkyCentre = 260.0;
constexpr double kSkyRadius = 222.0;
constexpr double kDegree = M_PI / 180.0;
constexpr double kOutside = -0.105;  // rad: where the azimuths stand, below the horizon
constexpr std::array<int, 2> kCircles = {30, 60};
constexpr double kCircleLabels = 15.0 * kDegree;  // the azimuth at which they stand

Point OnSky(double azimuth, double elevation) {
    const double r = kSkyRadius * (1.0 - elevation / (M_PI / 2.0));
    return {kSkyCentre + r * std::sin(azimuth), kSkyCentre - r * std::cos(azimuth)};
}

std::string Circle(double elevation, const char* className) {
    return Format("<circle class=\"%s\" cx=\"%g\" cy=\"%g\" r=\"%.1f\"/>\n", className, kSkyCentre,
                  kSkyCentre, kSkyRadius * (1.0 - elevation / (M_PI / 2.0)));
}

std::string SkyGrid(double mask) {
    std::string text = Circle(0.0, "rim") + Circle(30.0 * kDegree, "grid") +
                       Circle(60.0 * kDegree, "grid") + Circle(mask, "mask");
    for (int azimuth = 0; azimuth < 360; azimuth += 30) {
        const Point end = OnSky(azimuth * kDegree, 0.0);
        text += Format("<line class=\"grid\" x1=\"%g\" y1=\"%g\" x2=\"%.1f\" y2=\"%.1f\"/>\n",
                       kSkyCentre, kSkyCentre, end.x, end.y);
        const Point at = OnSky(azimuth * kDegree, kOutside);
        const std::string name = azimuth == 0     ? "N"
                                 : azimuth == 90  ? "E"
                                 : azimuth == 180 ? "S"
                                 : azimuth == 270 ? "W"
                                                  : Format("%d\xC2\xB0", azimuth);
        text += Format("<text class=\"%s\" x=\"%.1f\" y=\"%.1f\">%s</text>\n",
                       azimuth % 90 == 0 ? "wind" : "tick", at.x, at.y, name.c_str());
    }
    for (const int elevation : kCircles) {
        const Point at = OnSky(kCircleLabels, elevation * kDegree);
        text += Format("<text class=\"tick\" x=\"%.1f\" y=\"%.1f\">%d\xC2\xB0</text>\n", at.x, at.y,
                       elevation);
    }
    return text;
}

// A path of SVG in tenths of a unit: the first point of each stroke as it is, the others as steps.
class Strokes {
  public:
    void Begin(const Point& at) {
        last_ = Tenths(at);
        path_ += 'M';
        path_ += Text(last_.x) + " " + Text(last_.y) + "l";
    }
    void Continue(const Point& at) {
        const Point next = Tenths(at);
        const std::string y = Text(next.y - last_.y);
        path_ += Text(next.x - last_.x) + (y[0] == '-' ? "" : " ") + y + " ";
        last_ = next;
    }
    double DistanceTo(const Point& at) const { return Distance({last_.x / 10, last_.y / 10}, at); }
    const std::string& Text() const { return path_; }

  private:
    static Point Tenths(const Point& at) { return {std::round(at.x * 10), std::round(at.y * 10)}; }
    static std::string Text(double tenths) { return Format("%g", tenths / 10.0); }
    std::string path_;
    Point last_;  // tenths, so that steps do not add up their rounding
};

// The path of a satellite, pen up where it was not observed for a while; points that the eye could
// not tell apart are left out. Below the mask and above are paths of their own. What a wrong orbit
// puts below the horizon is not drawn.
std::string SkyPaths(const solve::SolveResult& result, const std::vector<solve::SkyPoint>& points,
                     double step, const std::string& systemClass) {
    constexpr double kVisible = 4.0;    // user units between points
    constexpr double kSmallGaps = 3.0;  // steps
    const double mask = result.session.config.elevationMask;
    Strokes low, high;
    const solve::SkyPoint* before = nullptr;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const solve::SkyPoint& point = points[i];
        if (point.elevation < 0.0) {
            before = nullptr;
            continue;
        }
        const bool above = point.elevation >= mask;
        Strokes& strokes = above ? high : low;
        const Point at = OnSky(point.azimuth, point.elevation);
        const bool connected =
            before != nullptr &&
            io::SecondsBetween(result.fed.times[before->epoch], result.fed.times[point.epoch]) <=
                kSmallGaps * step;
        const bool crossed = connected && above != (before->elevation >= mask);
        const bool ends = i + 1 == points.size() || above != (points[i + 1].elevation >= mask) ||
                          points[i + 1].elevation < 0.0;
        if (!connected || crossed) {
            strokes.Begin(connected ? OnSky(before->azimuth, before->elevation) : at);
            strokes.Continue(at);
        } else if (ends || strokes.DistanceTo(at) >= kVisible) {
            strokes.Continue(at);
        }
        before = &point;
    }
    std::string text;
    if (!low.Text().empty()) {
        text += "<path class=\"path low " + systemClass + "\" d=\"" + low.Text() + "\"/>\n";
    }
    if (!high.Text().empty()) {
        text += "<path class=\"path " + systemClass + "\" d=\"" + high.Text() + "\"/>\n";
    }
    return text;
}

// Finds places for labels beside points without covering those already placed.
class LabelPlaces {
  public:
    Point Find(const std::vector<Point>& near) {
        Point best;
        double clearest = -1.0;
        for (const Point& anchor : near) {
            for (const Point& shift : {Point{16.0, -8.0}, Point{16.0, 9.0}, Point{-16.0, -8.0},
                                       Point{-16.0, 9.0}, Point{0.0, -13.0}, Point{0.0, 14.0}}) {
                const Point at{anchor.x + shift.x, anchor.y + shift.y};
                const double clear = Clearance(at);
                if (clear >= 1.0) {
                    taken_.push_back(at);
                    return at;
                }
                if (clear > clearest) {
                    clearest = clear;
                    best = at;
                }
            }
        }
        taken_.push_back(best);
        return best;
    }

    void Take(const Point& at) { taken_.push_back(at); }

  private:
    // 1 and above: free.
    double Clearance(const Point& at) const {
        constexpr double kWidth = 29.0, kHeight = 14.0;
        double clear = 2.0;
        for (const Point& other : taken_) {
            clear = std::min(clear, std::max(std::abs(at.x - other.x) / kWidth,
                                             std::abs(at.y - other.y) / kHeight));
        }
        return clear;
    }
    std::vector<Point> taken_;
};

// ---- tracks -------------------------------------------------------------------------------------

constexpr double kWidth = 960.0, kLeft = 44.0, kRight = 10.0;
constexpr double kTop = 30.0, kRow = 17.0, kBottom = 26.0;

// Seconds between the marks of a time axis with at most about `count` of them.
double TickStep(double length, double count) {
    for (const double step : {10.0, 30.0, 60.0, 120.0, 300.0, 600.0, 900.0, 1800.0, 3600.0, 7200.0,
                              10800.0, 21600.0, 43200.0}) {
        if (length / step <= count) {
            return step;
        }
    }
    constexpr double kDay = 86400.0;
    return kDay * std::ceil(length / kDay / count);
}

class TrackDrawing {
  public:
    TrackDrawing(const solve::SolveResult& result, const Timeline& timeline)
        : result_(result), timeline_(timeline) {
        const auto& times = result.fed.times;
        length_ = std::max(1.0, io::SecondsBetween(times.front(), times.back()));
        height_ = kTop + kRow * static_cast<double>(result.fed.common.size()) + kBottom;
    }

    std::string Svg() {
        std::string text = Format(
            "<svg class=\"tracks\" viewBox=\"0 0 %g %g\" role=\"img\" "
            "aria-labelledby=\"tracks-title tracks-desc\">\n",
            kWidth, height_);
        text += "<title id=\"tracks-title\">Satellites and ambiguity tracks over time</title>\n";
        text += "<desc id=\"tracks-desc\">" + Escaped(Description()) + "</desc>\n";
        text +=
            "<defs><pattern id=\"hatch\" width=\"5\" height=\"5\" patternUnits=\"userSpaceOnUse\" "
            "patternTransform=\"rotate(45)\"><rect class=\"hatch-ground\" width=\"5\" "
            "height=\"5\"/><line class=\"hatch\" x1=\"0\" y1=\"0\" x2=\"0\" y2=\"5\"/></pattern>"
            "</defs>\n";
        text += Axis();
        double y = kTop;
        std::size_t row = 0;
        for (const auto& [satellite, epochs] : result_.fed.common) {
            if (row++ % 2 == 0) {
                text +=
                    Format("<rect class=\"stripe\" x=\"0\" y=\"%g\" width=\"%g\" height=\"%g\"/>\n",
                           y, kWidth, kRow);
            }
            text += Row(satellite, epochs, y);
            y += kRow;
        }
        return text + PeriodLines() + "</svg>\n";
    }

  private:
    double X(std::uint32_t epoch) const {
        const auto& times = result_.fed.times;
        return XAt(io::SecondsBetween(times.front(), times[epoch]));
    }
    double XAt(double seconds) const {
        return kLeft + (kWidth - kLeft - kRight) * seconds / length_;
    }

    std::string Description() const {
        std::size_t slips = 0, gaps = 0;
        for (const Track& track : timeline_.tracks) {
            slips += track.start == TrackStart::kSlip ? 1 : 0;
            gaps += track.start == TrackStart::kGap ? 1 : 0;
        }
        return session::Plural(result_.fed.common.size(), "satellite") + ", " +
               session::Plural(timeline_.tracks.size(), "ambiguity track") + ", of which " +
               session::Plural(slips, "track") + " begin after a slip and " +
               session::Plural(gaps, "track") +
               " after a gap of the observations, all inside a period. The table of tracks holds "
               "the same.";
    }

    std::string Axis() const {
        constexpr double kMarks = 9.0, kDay = 86400.0;
        const double step = TickStep(length_, kMarks);
        const double start = result_.fed.times.front().seconds;
        std::string text;
        for (double t = std::ceil(start / step) * step; t <= start + length_; t += step) {
            const double x = XAt(t - start);
            text += Format("<line class=\"grid\" x1=\"%.1f\" y1=\"%g\" x2=\"%.1f\" y2=\"%g\"/>\n",
                           x, kTop - 4.0, x, height_ - kBottom + 4.0);
            const int second = static_cast<int>(std::fmod(t, kDay));
            std::string label = Format("%02d:%02d", second / 3600, second / 60 % 60);
            if (step < 60.0) {
                label += Format(":%02d", second % 60);
            }
            for (const double y : {kTop - 9.0, height_ - kBottom + 16.0}) {
                text += Format("<text class=\"tick\" x=\"%.1f\" y=\"%.1f\">%s</text>\n", x, y,
                               label.c_str());
            }
        }
        return text;
    }

    std::string Row(engine::Satellite satellite, const std::vector<std::uint32_t>& epochs,
                    double y) {
        const double middle = y + kRow / 2.0;
        std::string text = Format("<text class=\"name\" x=\"%g\" y=\"%g\">%s</text>\n", kLeft - 8.0,
                                  middle + 4.0, engine::ToString(satellite).c_str());
        // Gaps too short to be seen are not drawn.
        constexpr double kVisible = 1500.0;
        const auto bridge =
            static_cast<std::uint32_t>(static_cast<double>(result_.fed.times.size()) / kVisible);
        std::string lines;
        for (const Span& stretch : Stretches(epochs, bridge)) {
            constexpr double kLeast = 1.0;
            const double from = X(stretch.first);
            lines +=
                Format("M%.1f %gH%.1f", from, middle, std::max(X(stretch.last), from + kLeast));
        }
        text += "<g class=\"" + SystemClass(satellite.system) +
                "\">\n<path class=\"observed\" d=\"" + lines + "\"/>\n";
        for (const Period& period : timeline_.periods) {
            const auto& candidates = period.references[engine::IndexOf(satellite.system)];
            if (!candidates.empty() && candidates.front() == satellite) {
                text += ReferenceBar(period.epochs, satellite, candidates.size() == 1, middle);
            }
        }
        for (const Track& track : timeline_.tracks) {
            if (track.satellite == satellite) {
                text += TrackBar(track, middle);
            }
        }
        return text + "</g>\n";
    }

    std::string Bar(const Span& span, double middle, const std::string& className,
                    const std::string& title) const {
        constexpr double kLeast = 2.0, kHeight = 9.0;
        const double from = X(span.first);
        return Format("<rect class=\"%s\" x=\"%.1f\" y=\"%g\" width=\"%.1f\" height=\"%g\">",
                      className.c_str(), from, middle - kHeight / 2.0,
                      std::max(X(span.last) - from, kLeast), kHeight) +
               (title.empty() ? "" : "<title>" + Escaped(title) + "</title>") + "</rect>\n";
    }

    std::string ReferenceBar(const Span& span, engine::Satellite satellite, bool certain,
                             double middle) const {
        std::string text =
            Bar(span, middle, "reference",
                engine::ToString(satellite) + ", " + (certain ? "" : "probably ") +
                    "the reference satellite (derived), " + ClockTime(result_, span.first) +
                    " to " + ClockTime(result_, span.last));
        constexpr double kRoom = 32.0;
        if (X(span.last) - X(span.first) > kRoom) {
            text += Format("<text class=\"ref\" x=\"%.1f\" y=\"%g\">%s</text>\n",
                           (X(span.first) + X(span.last)) / 2.0, middle + 3.5,
                           certain ? "ref" : "ref?");
        }
        return text;
    }

    std::string TrackBar(const Track& track, double middle) const {
        // With more of them the table alone tells of each.
        constexpr std::size_t kTold = 800;
        const engine::Ambiguity& a = track.ambiguity;
        std::string title = engine::ToString(track.satellite) + ", " +
                            ClockTime(result_, track.epochs.first) + " to " +
                            ClockTime(result_, track.epochs.last) + ", " +
                            session::Plural(static_cast<std::size_t>(std::max(a.rows1, 0)), "row") +
                            ", " + std::to_string(a.rejected1) + " rejected";
        const char* begin[] = {"", "; begins after a gap", "; begins after a slip"};
        title += begin[static_cast<int>(track.start)];
        std::string text =
            Bar(track.epochs, middle, "track", timeline_.tracks.size() > kTold ? "" : title);
        const double x = X(track.epochs.first);
        if (track.start == TrackStart::kSlip) {
            text += Format("<path class=\"slip\" d=\"M%.1f %gl-4.5 -7h9z\"/>\n", x, middle + 1.0);
        } else if (track.start == TrackStart::kGap) {
            text += Format("<path class=\"gap\" d=\"M%.1f %gv13\"/>\n", x, middle - 6.5);
        }
        return text;
    }

    std::string PeriodLines() const {
        std::string text;
        for (std::size_t i = 1; i < timeline_.periods.size(); ++i) {
            const Span &before = timeline_.periods[i - 1].epochs,
                       &after = timeline_.periods[i].epochs;
            const double x = (X(before.last) + X(after.first)) / 2.0;
            text += Format("<line class=\"period\" x1=\"%.1f\" y1=\"%g\" x2=\"%.1f\" y2=\"%g\"/>\n",
                           x, kTop - 4.0, x, height_ - kBottom + 4.0);
        }
        return text;
    }

    const solve::SolveResult& result_;
    const Timeline& timeline_;
    double length_ = 1.0;  // s
    double height_ = 0.0;
};

}  // namespace

std::string SkyPlot(const solve::SolveResult& result, const Sky& sky) {
    std::string text =
        "<svg class=\"sky\" viewBox=\"0 0 520 520\" role=\"img\" "
        "aria-labelledby=\"sky-title sky-desc\">\n"
        "<title id=\"sky-title\">Sky plot</title>\n<desc id=\"sky-desc\">" +
        Escaped("Paths of " + session::Plural(sky.size(), "satellite") +
                " observed by both receivers, over the base. North is up, the zenith in the "
                "middle. The table of satellites holds their elevations.") +
        "</desc>\n" + SkyGrid(result.session.config.elevationMask);
    double step = std::numeric_limits<double>::infinity();
    for (const auto& [satellite, points] : sky) {
        for (std::size_t i = 1; i < points.size(); ++i) {
            step = std::min(step, io::SecondsBetween(result.fed.times[points[i - 1].epoch],
                                                     result.fed.times[points[i].epoch]));
        }
    }
    LabelPlaces places;
    std::string labels;
    for (int azimuth = 0; azimuth < 360; azimuth += 30) {
        places.Take(OnSky(azimuth * kDegree, kOutside));
    }
    for (const int elevation : kCircles) {
        places.Take(OnSky(kCircleLabels, elevation * kDegree));
    }
    for (const auto& [satellite, points] : sky) {
        const Point end = OnSky(points.back().azimuth, points.back().elevation);
        places.Take(end);
    }
    for (const auto& [satellite, points] : sky) {
        const std::string className = SystemClass(satellite.system);
        const std::string name = engine::ToString(satellite);
        text += SkyPaths(result, points, step, className);
        std::vector<Point> anchors;
        for (const double part : {1.0, 0.5, 0.75, 0.25, 0.0}) {
            const auto& point =
                points[static_cast<std::size_t>(part * static_cast<double>(points.size() - 1))];
            anchors.push_back(OnSky(point.azimuth, point.elevation));
        }
        const Point at = places.Find(anchors);
        labels += Format("<circle class=\"end %s\" cx=\"%.1f\" cy=\"%.1f\" r=\"3.5\"/>\n",
                         className.c_str(), anchors.front().x, anchors.front().y);
        labels += Format("<text class=\"name %s\" x=\"%.1f\" y=\"%.1f\">%s</text>\n",
                         className.c_str(), at.x, at.y, name.c_str());
    }
    return text + labels + "</svg>\n";
}

std::string TrackPlot(const solve::SolveResult& result, const Timeline& timeline) {
    return TrackDrawing(result, timeline).Svg();
}

std::string ClockTime(const solve::SolveResult& result, std::uint32_t epoch) {
    const auto& times = result.fed.times;
    constexpr std::size_t kDate = 11;  // "2020-06-25 "
    const std::string text = io::FormatTime(times[epoch], 0);
    const bool oneDay = io::FormatTime(times.front(), 0).substr(0, kDate) ==
                        io::FormatTime(times.back(), 0).substr(0, kDate);
    return oneDay ? text.substr(kDate) : text;
}

}  // namespace vornel::report
