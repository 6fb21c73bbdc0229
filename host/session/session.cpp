#include "session/session.h"

namespace vornel::session {

const char* PositionSourceName(PositionSource source) {
    switch (source) {
        case PositionSource::kOption:
            return "given";
        case PositionSource::kHeader:
            return "header";
        case PositionSource::kCode:
            return "code";
    }
    return "header";
}

io::GpsTime Session::FirstTime() const {
    return EngineTime(inputs.rover.epochs[pairs.front().rover].time,
                      inputs.base.epochs[pairs.front().base].time);
}

io::GpsTime Session::LastTime() const {
    return EngineTime(inputs.rover.epochs[pairs.back().rover].time,
                      inputs.base.epochs[pairs.back().base].time);
}

}  // namespace vornel::session
