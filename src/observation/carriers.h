// The two carriers of each satellite: frequencies, wavelengths, and how the ionosphere scales to
// them.
#pragma once

namespace vornel {

// A Galileo wavelength below this, metres, means that the band does not exist.
inline constexpr double kNoWavelength = 1e-05;

struct Carriers {
    double frequency1, frequency2;    // Hz
    double wavelength1, wavelength2;  // metres; 0.0 for a Galileo band that does not exist
    double ionoScale1, ionoScale2;    // ionospheric delay over that on GPS L1
    // The wavelengths for the antenna term: those of bands 1 and 2 where Galileo has none.
    double antennaWavelength1, antennaWavelength2;
};

class CarrierTable {
  public:
    // Galileo bands as configured; equal ones leave Galileo without a second frequency.
    CarrierTable(int galFreq1, int galFreq2);

    // glonassChannel matters for GLONASS alone.
    Carriers Of(int system, int glonassChannel) const;

    bool HasFirstGalileoBand() const { return galileo_.wavelength1 >= kNoWavelength; }
    bool HasSecondGalileoBand() const { return galileo_.wavelength2 >= kNoWavelength; }

  private:
    Carriers galileo_;
};

}  // namespace vornel
