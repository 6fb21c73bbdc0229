// Time: an epoch as whole days, whole seconds and a fraction, in GPS time; spans of two epochs.
#pragma once

namespace vornel {

// A moment in GPS time. Zero in all fields stands for "no time" as well as for 2000-01-01 00:00:00.
class Epoch {
  public:
    int day = 0;            // whole days since 2000-01-01, negative before
    int second = 0;         // whole seconds of the day, 0 to 86399
    double fraction = 0.0;  // of a second, 0 to 1; 1 only by the rounding of a tiny negative

    Epoch() = default;
    // From a day count since 2000-01-01.
    explicit Epoch(double days);
    // From a GPS week (not modulo 1024) and seconds of the week.
    Epoch(int week, double seconds);
    // From year, month, day, hour, minute, second.
    explicit Epoch(const double calendar[6]);
    Epoch(const Epoch&) = default;
    Epoch& operator=(const Epoch&) = default;
    virtual ~Epoch() = default;

    void ToWeekSeconds(int& week, double& seconds) const;
    double SecondsOfWeek() const;
    // Seconds since 2000-01-01 00:00:00.
    double TotalSeconds() const;
    void ToCalendar(int& year, int& month, int& dayOfMonth) const;
    void ToCalendar(int& year, int& month, int& dayOfMonth, int& hour, int& minute,
                    double& seconds) const;
    int DayOfYear() const;  // from 1
    bool IsZero() const { return day == 0 && second == 0 && fraction == 0.0; }

  private:
    void Normalise();
    friend double operator-(const Epoch& left, const Epoch& right);
    friend Epoch operator+(const Epoch& epoch, double seconds);
};

bool operator<(const Epoch& left, const Epoch& right);
bool operator<=(const Epoch& left, const Epoch& right);
inline bool operator==(const Epoch& left, const Epoch& right) {
    return left.day == right.day && left.second == right.second && left.fraction == right.fraction;
}
inline bool operator!=(const Epoch& left, const Epoch& right) {
    return !(left == right);
}
// Seconds from right to left. Formed field by field, so that it keeps its digits however large
// `day`.
double operator-(const Epoch& left, const Epoch& right);
Epoch operator+(const Epoch& epoch, double seconds);
Epoch operator-(const Epoch& epoch, double seconds);

// The system's clock, UTC.
Epoch UtcNow();
// GPS time of a moment given in UTC: leap seconds added.
Epoch UtcToGps(const Epoch& utc);
// Seconds of the day of Moscow time (UTC + 3 h) for a GPS week and seconds; no leap seconds enter.
double GlonassSecondsOfDay(int week, double seconds);

class TimePeriod {
  public:
    Epoch start;
    Epoch end;

    TimePeriod() = default;
    TimePeriod(const Epoch& startEpoch, const Epoch& endEpoch) : start(startEpoch), end(endEpoch) {}
    TimePeriod(const TimePeriod&) = default;
    TimePeriod& operator=(const TimePeriod&) = default;
    virtual ~TimePeriod() = default;
};

}  // namespace vornel
