#include "network/adjustment.h"

#include <Eigen/Eigenvalues>
#include <algorithm>
#include <utility>

#include "network/blunder_search.h"
#include "network/dense.h"
#include "network/graph.h"
#include "network/held_network.h"
#include "network/least_squares.h"
#include "network/model.h"

namespace vornel::network {
namespace {

using Indices = std::vector<std::size_t>;

// Known positions that are less accurate than this (m) hold nothing.
constexpr double kLargestKnownSigma = 10.0;

// The station to hold; kNone where none was asked for.
std::size_t CheckOptions(const Network& network, const AdjustmentOptions& options) {
    std::size_t heldStation = kNone;
    for (std::size_t s = 0; s < network.stations.size(); ++s) {
        const NetworkStation& station = network.stations[s];
        if (station.known && !station.known->isFixed) {
            const Eigen::Vector3d variances =
                Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>(ToEigen(station.known->covariance),
                                                               Eigen::EigenvaluesOnly)
                    .eigenvalues();
            if (variances(2) > kLargestKnownSigma * kLargestKnownSigma) {
                throw NetworkError("the known position of station " + station.name +
                                   " has a standard deviation above 10 m; leave it out");
            }
        }
        if (station.name == options.heldStation) {
            heldStation = s;
        }
    }
    if (!options.heldStation.empty() && heldStation == kNone) {
        throw NetworkError("the station to hold, " + options.heldStation +
                           ", is not in the network");
    }
    return heldStation;
}

}  // namespace

struct PositionCovariance::Data {
    std::shared_ptr<const LeastSquares> equations;
    Indices component;  // by station
    double scale = 1.0;
    // With inner constraints: by station, the covariance of its position with the mean one of its
    // component; and by component that of the mean.
    std::vector<Eigen::Matrix3d> withMean, ofMean;

    // From the covariance with one station held.
    Matrix3 Handed(const Eigen::Matrix3d& held, std::size_t a, std::size_t b) const {
        if (component[a] != component[b]) {
            return {};
        }
        Eigen::Matrix3d block = held;
        if (!withMean.empty()) {
            block += ofMean[component[a]] - withMean[a] - withMean[b].transpose();
        }
        Matrix3 rows{};
        for (Eigen::Index i = 0; i < 3; ++i) {
            for (Eigen::Index j = 0; j < 3; ++j) {
                rows[static_cast<std::size_t>(3 * i + j)] = scale * block(i, j);
            }
        }
        return rows;
    }
};

Matrix3 PositionCovariance::Between(std::size_t a, std::size_t b) const {
    return data_->Handed(data_->equations->Covariance(a, b), a, b);
}

std::vector<Matrix3> PositionCovariance::WithAll(std::size_t station) const {
    const LeastSquares& equations = *data_->equations;
    Block columns = Block::Zero(static_cast<Eigen::Index>(equations.unknowns()), 3);
    if (equations.RowOf(station) >= 0) {
        columns.middleRows<3>(equations.RowOf(station)).setIdentity();
        columns = equations.Solve(columns);
    }
    std::vector<Matrix3> blocks;
    for (std::size_t other = 0; other < data_->component.size(); ++other) {
        Eigen::Matrix3d block = Eigen::Matrix3d::Zero();
        if (equations.RowOf(other) >= 0) {
            block = columns.middleRows<3>(equations.RowOf(other));
        }
        blocks.push_back(data_->Handed(block, other, station));
    }
    return blocks;
}

Matrix3 PositionCovariance::OfDifference(std::size_t a, std::size_t b) const {
    const Eigen::Matrix3d both = ToEigen(Between(a, b));
    return ToSymmetric(ToEigen(OfStation(a)) + ToEigen(OfStation(b)) - both - both.transpose());
}

// What the last adjustment says of each station and vector.
class Adjuster {
  public:
    Adjuster(const Network& network, const AdjustmentOptions& options, const Graph& graph,
             const State& state, std::size_t heldStation)
        : network_(network),
          options_(options),
          graph_(graph),
          state_(state),
          held_(network, graph, options, state, options.datum, heldStation) {}

    Adjustment HandOut() {
        result_.datum = options_.datum;
        result_.global = held_.global();
        result_.scale = held_.tester().scale();
        result_.levelOfEach = held_.level();
        result_.noncentrality = held_.tester().noncentrality();
        result_.components = held_.parts();
        HandOutCovariance();
        HandOutVectors();
        HandOutStations();
        HandOutOccupations();
        for (std::size_t s = 0; s < network_.stations.size(); ++s) {
            const bool isPart =
                held_.parts()[held_.model().component[s]].datum == PartDatum::kKnownPositions;
            if (network_.stations[s].known && isPart) {
                const bool isFixed = network_.stations[s].known->isFixed;
                result_.known.push_back({s, isFixed, held_.TestKnown(s)});
            }
        }
        return std::move(result_);
    }

  private:
    void HandOutCovariance() {
        auto data = std::make_shared<PositionCovariance::Data>(
            PositionCovariance::Data{held_.sharedEquations(),
                                     {held_.model().component.begin(),
                                      held_.model().component.begin() +
                                          static_cast<std::ptrdiff_t>(network_.stations.size())},
                                     held_.tester().scale(),
                                     {},
                                     {}});
        if (options_.datum == Datum::kFree) {
            data->withMean.resize(network_.stations.size());
            for (const ComponentResult& part : held_.parts()) {
                const double share = 1.0 / static_cast<double>(part.stations.size());
                Block mean =
                    Block::Zero(static_cast<Eigen::Index>(held_.equations().unknowns()), 3);
                for (const std::size_t s : part.stations) {
                    if (held_.equations().RowOf(s) >= 0) {
                        mean.middleRows<3>(held_.equations().RowOf(s))
                            .diagonal()
                            .setConstant(share);
                    }
                }
                mean = held_.equations().Solve(mean);
                Eigen::Matrix3d ofMean = Eigen::Matrix3d::Zero();
                for (const std::size_t s : part.stations) {
                    data->withMean[s] = Eigen::Matrix3d::Zero();
                    if (held_.equations().RowOf(s) >= 0) {
                        data->withMean[s] = mean.middleRows<3>(held_.equations().RowOf(s));
                    }
                    ofMean += share * data->withMean[s];
                }
                data->ofMean.push_back(ofMean);
            }
        }
        result_.covariance.data_ = data;
    }

    void HandOutVectors() {
        for (std::size_t v = 0; v < network_.vectors.size(); ++v) {
            VectorResult vector;
            if (!graph_.refused[v].empty()) {
                vector.use = VectorUse::kRefused;
                vector.reason = graph_.refused[v];
                vector.test = Untested();
                result_.vectors.push_back(vector);
                continue;
            }
            const Vector3& place = held_.model().given[graph_.ends[v].base];
            Eigen::Matrix3d covariance;
            if (state_.isUsed[v]) {
                vector.residual = ToVector3(held_.equations().Residual(held_.model().ofVector[v]));
                covariance = held_.ResidualCovariance(v);
                vector.test = held_.TestVector(v);
            } else {
                vector.use = network_.vectors[v].isCheck ? VectorUse::kCheck : VectorUse::kRemoved;
                const Misfit misfit = held_.MisfitOf(v);
                vector.isJoined = misfit.isJoined;
                vector.residual = ToVector3(misfit.value);
                covariance = misfit.covariance;
                vector.test = held_.TestMisfit(v, misfit);
            }
            vector.residualNeu = session::ToNeu(session::ToGeodetic(place), vector.residual);
            vector.sigmaNeu = SigmaNeu(place, ToSymmetric(held_.tester().scale() * covariance));
            result_.vectors.push_back(vector);
        }
    }

    void HandOutStations() {
        const int dof =
            options_.varianceFactor == VarianceFactor::kEstimated ? held_.global().dof : 0;
        std::vector<Eigen::Vector3d> mean(held_.parts().size(), Eigen::Vector3d::Zero());
        if (options_.datum == Datum::kFree) {
            for (std::size_t c = 0; c < held_.parts().size(); ++c) {
                for (const std::size_t s : held_.parts()[c].stations) {
                    mean[c] += held_.equations().Correction(s) /
                               static_cast<double>(held_.parts()[c].stations.size());
                }
            }
        }
        for (std::size_t s = 0; s < network_.stations.size(); ++s) {
            StationResult station;
            station.component = held_.model().component[s];
            const ComponentResult& part = held_.parts()[station.component];
            const bool isFree = part.datum == PartDatum::kInnerConstraints;
            station.isDetermined = part.vectors > 0;
            station.isHeld = held_.IsHeld(s) && !isFree && station.isDetermined;
            const Eigen::Vector3d correction =
                held_.equations().Correction(s) - mean[station.component];
            station.position = session::Plus(held_.model().given[s], ToVector3(correction));
            station.correctionNeu =
                session::ToNeu(session::ToGeodetic(station.position), ToVector3(correction));
            const PositionCovariance::Data& data = *result_.covariance.data_;
            station.covariance = data.Handed(held_.equations().JoinedCovariance(s, s), s, s);
            station.sigmaNeu = SigmaNeu(station.position, station.covariance);
            station.ellipse =
                HorizontalEllipse(station.position, station.covariance, options_.confidence, dof);
            station.heightInterval =
                HeightInterval(station.position, station.covariance, options_.confidence, dof);
            result_.stations.push_back(station);
        }
        for (std::size_t v = 0; v < network_.vectors.size(); ++v) {
            if (state_.isUsed[v]) {
                ++result_.stations[graph_.ends[v].base].vectors;
                ++result_.stations[graph_.ends[v].rover].vectors;
            }
        }
        MarkControlled();
    }

    // Of each component the largest part that controlled vectors and known positions join.
    void MarkControlled() {
        const Model& model = held_.model();
        std::vector<bool> isControlled(model.differences.size(), true);
        for (std::size_t v = 0; v < network_.vectors.size(); ++v) {
            if (state_.isUsed[v]) {
                isControlled[model.ofVector[v]] = result_.vectors[v].test.dof == 3;
            }
        }
        std::vector<Ends> joined;
        for (std::size_t d = 0; d < model.differences.size(); ++d) {
            if (isControlled[d]) {
                joined.push_back({model.differences[d].from, model.differences[d].to});
            }
        }
        for (const ComponentResult& part : held_.parts()) {
            std::size_t first = kNone;
            for (const std::size_t s : part.stations) {
                if (part.datum == PartDatum::kKnownPositions && network_.stations[s].known) {
                    first = first == kNone ? s : first;
                    joined.push_back({first, s});
                }
            }
        }
        const Indices group = Components(model.stationOf.size(), joined);
        std::vector<std::size_t> size(group.size());
        for (std::size_t s = 0; s < network_.stations.size(); ++s) {
            ++size[group[s]];
        }
        for (const ComponentResult& part : held_.parts()) {
            std::size_t largest = group[part.stations.front()];
            for (const std::size_t s : part.stations) {
                largest = size[group[s]] > size[largest] ? group[s] : largest;
            }
            for (const std::size_t s : part.stations) {
                result_.stations[s].isControlled = group[s] == largest && size[largest] > 1;
            }
        }
    }

    void HandOutOccupations() {
        for (const auto& [occupation, vectors] : held_.model().occupations) {
            const bool isApart = state_.apart.count(occupation) > 0;
            if (vectors.size() < 2 && !isApart) {
                continue;
            }
            OccupationResult result;
            result.station = occupation.station;
            result.session = occupation.session;
            result.vectors = vectors;
            result.isApart = isApart;
            if (isApart) {
                result.test = Untested();
                HandOutApart(occupation, result);
            } else {
                result.test = held_.TestOccupation(occupation);
                result.offsetNeu = result.test.offsetNeu;
                result.sigmaNeu = result.test.sigmaNeu;
            }
            result_.occupations.push_back(result);
        }
    }

    void HandOutApart(const Occupation& occupation, OccupationResult& result) const {
        const std::size_t node = held_.model().ownNodes.at(occupation);
        const Vector3& place = held_.model().given[occupation.station];
        const Eigen::Vector3d offset =
            held_.equations().Correction(node) - held_.equations().Correction(occupation.station);
        const Eigen::Matrix3d both = held_.equations().Covariance(node, occupation.station);
        const Eigen::Matrix3d covariance =
            held_.equations().JoinedCovariance(node, node) +
            held_.equations().JoinedCovariance(occupation.station, occupation.station) - both -
            both.transpose();
        result.offsetNeu = session::ToNeu(session::ToGeodetic(place), ToVector3(offset));
        result.sigmaNeu = SigmaNeu(place, ToSymmetric(held_.tester().scale() * covariance));
    }

    const Network& network_;
    const AdjustmentOptions& options_;
    const Graph& graph_;
    const State& state_;
    HeldNetwork held_;
    Adjustment result_;
};

Adjustment Adjust(const Network& network, const AdjustmentOptions& options) {
    const Graph graph = MakeGraph(network);
    const std::size_t heldStation = CheckOptions(network, options);
    State all;
    for (std::size_t v = 0; v < network.vectors.size(); ++v) {
        all.isUsed.push_back(graph.refused[v].empty() && !network.vectors[v].isCheck);
    }
    SearchResult search = SearchBlunders(network, graph, options, all, heldStation);
    Adjustment result = Adjuster(network, options, graph, search.state, heldStation).HandOut();
    result.all = search.all;
    result.rounds = std::move(search.rounds);
    result.end = search.end;
    return result;
}

}  // namespace vornel::network
