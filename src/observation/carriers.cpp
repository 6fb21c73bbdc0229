#include "observation/carriers.h"

#include "foundation/satellite.h"

namespace vornel {

namespace {

Carriers WithOwnAntennaWavelengths(double frequency1, double frequency2, double wavelength1,
                                   double wavelength2, double ionoScale1, double ionoScale2) {
    return {frequency1, frequency2, wavelength1, wavelength2,
            ionoScale1, ionoScale2, wavelength1, wavelength2};
}

double IonoScale(double frequency) {
    return kGpsL1FrequencySquared / (frequency * frequency);
}

}  // namespace

CarrierTable::CarrierTable(int galFreq1, int galFreq2) {
    const int band1 = galFreq1;
    const int band2 = galFreq1 == galFreq2 ? 0 : galFreq2;
    galileo_ = WithOwnAntennaWavelengths(
        BandFrequency(band1), BandFrequency(band2), BandWavelength(band1), BandWavelength(band2),
        IonoScale(BandFrequency(band1)), IonoScale(BandFrequency(band2)));
    if (!HasFirstGalileoBand()) {
        galileo_.antennaWavelength1 = BandWavelength(1);
    }
    if (!HasSecondGalileoBand()) {
        galileo_.antennaWavelength2 = BandWavelength(2);
    }
}

Carriers CarrierTable::Of(int system, int glonassChannel) const {
    switch (system) {
        case kGlonass: {
            const double frequency1 = GlonassL1Frequency(glonassChannel);
            const double frequency2 = GlonassL2Frequency(glonassChannel);
            return WithOwnAntennaWavelengths(
                frequency1, frequency2, GlonassL1Wavelength(glonassChannel),
                GlonassL2Wavelength(glonassChannel), IonoScale(frequency1), IonoScale(frequency2));
        }
        case kBds:
            return WithOwnAntennaWavelengths(kBdsB1Frequency, kBdsB2Frequency, kBdsB1Wavelength,
                                             kBdsB2Wavelength, kBdsB1IonoScale, kBdsB2IonoScale);
        case kGalileo:
            return galileo_;
        default:
            return WithOwnAntennaWavelengths(kGpsL1Frequency, kGpsL2Frequency, kGpsL1Wavelength,
                                             kGpsL2Wavelength, 1.0, kGpsL2IonoScale);
    }
}

}  // namespace vornel
