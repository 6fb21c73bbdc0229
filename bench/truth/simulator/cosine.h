// Cosines for sums of many waves: a polynomial that compilers turn into vector code, the same on every
// machine.
#pragma once

namespace vornel::rough {

// cos(x) to 1e-11, for |x| below 1e5; the error grows in proportion beyond.
inline double Cosine(double x) {
    constexpr double kPerTurn = 0.15915494309189535;  // 1 / (2 pi)
    constexpr double kRound = 6755399441055744.0;     // 1.5 * 2^52: adding it drops the fraction
    const double turns = x * kPerTurn;
    const double r = turns - ((turns + kRound) - kRound);
    const double y = r * r;
    // Taylor series of cos(2 pi r), |r| <= 1/2, to the term of r^22.
    double sum = -0.0003229910672070978;
    sum = sum * y + 0.0037798342006800396;
    sum = sum * y + -0.03638284114254567;
    sum = sum * y + 0.28200596845579123;
    sum = sum * y + -1.714390711088672;
    sum = sum * y + 7.903536371318469;
    sum = sum * y + -26.4262567833744;
    sum = sum * y + 60.24464137187666;
    sum = sum * y + -85.45681720669373;
    sum = sum * y + 64.9393940226683;
    sum = sum * y + -19.739208802178716;
    sum = sum * y + 1.0;
    return sum;
}

inline double Sine(double x) {
    return Cosine(x - 1.5707963267948966);
}

}  // namespace vornel::rough
