#include "network/statistics.h"

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/non_central_chi_squared.hpp>
#include <cmath>

namespace vornel::network {
namespace {

using boost::math::chi_squared;
using boost::math::complement;
using boost::math::fisher_f;
using boost::math::non_central_chi_squared;

}  // namespace

double ChiSquareTail(double statistic, int dof) {
    return statistic <= 0.0 ? 1.0 : boost::math::cdf(complement(chi_squared(dof), statistic));
}

double ChiSquareCritical(double tail, int dof) {
    return boost::math::quantile(complement(chi_squared(dof), tail));
}

double FisherTail(double statistic, int dof1, int dof2) {
    return statistic <= 0.0 ? 1.0 : boost::math::cdf(complement(fisher_f(dof1, dof2), statistic));
}

double FisherCritical(double tail, int dof1, int dof2) {
    return boost::math::quantile(complement(fisher_f(dof1, dof2), tail));
}

double Noncentrality(int dof, double level, double power) {
    return non_central_chi_squared::find_non_centrality(dof, ChiSquareCritical(level, dof),
                                                        1.0 - power);
}

double LevelOfEach(double level, int tests) {
    return -std::expm1(std::log1p(-level) / tests);
}

}  // namespace vornel::network
