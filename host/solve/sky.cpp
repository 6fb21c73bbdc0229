#include "solve/sky.h"

#include <cmath>

#include "session/broadcast_orbit.h"

namespace vornel::solve {

std::map<engine::Satellite, std::vector<SkyPoint>> SkyTracks(const session::Session& session,
                                                             const FeedSummary& fed, double step) {
    std::map<engine::Satellite, std::vector<SkyPoint>> tracks;
    const session::Geodetic place = session::ToGeodetic(session.base.position);
    for (const auto& [satellite, epochs] : fed.common) {
        std::vector<SkyPoint>& track = tracks[satellite];
        for (const std::uint32_t epoch : epochs) {
            const io::GpsTime& time = fed.times[epoch];
            if (!track.empty() && io::SecondsBetween(fed.times[track.back().epoch], time) < step) {
                continue;
            }
            constexpr double kFlight = 0.075;  // s, near enough for a direction
            const auto state = session::BroadcastState(session.ephemerides, satellite,
                                                       io::Shifted(time, -kFlight));
            if (!state) {
                continue;
            }
            const session::Vector3 neu =
                session::ToNeu(place, session::Minus(state->position, session.base.position));
            const double azimuth = std::atan2(neu[1], neu[0]);
            track.push_back({epoch, azimuth < 0.0 ? azimuth + 2.0 * M_PI : azimuth,
                             std::atan2(neu[2], std::hypot(neu[0], neu[1]))});
        }
        if (track.empty()) {
            tracks.erase(satellite);
        }
    }
    return tracks;
}

}  // namespace vornel::solve
