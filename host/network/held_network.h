// A network adjusted once: what has weight, held in one way, and the tests within it.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "network/adjustment.h"
#include "network/blunder_test.h"
#include "network/graph.h"
#include "network/least_squares.h"
#include "network/model.h"

namespace vornel::network {

// What a vector without weight misses the network by.
struct Misfit {
    Eigen::Vector3d value = Eigen::Vector3d::Zero();         // m
    Eigen::Matrix3d covariance = Eigen::Matrix3d::Zero();    // m^2
    Eigen::Matrix3d ofVector = Eigen::Matrix3d::Identity();  // m^2, the vector's part of it
    bool isJoined = false;                                   // the network joins its ends
};

// A test where there is nothing to test with.
BlunderTest Untested();

class HeldNetwork {
  public:
    // `heldStation`: kNone where it is left to choice. The references must outlive this object.
    // Throws NetworkError where positions are lost in rounding.
    HeldNetwork(const Network& network, const Graph& graph, const AdjustmentOptions& options,
                const State& state, Datum datum, std::size_t heldStation);

    const Model& model() const { return model_; }
    const LeastSquares& equations() const { return *equations_; }
    std::shared_ptr<const LeastSquares> sharedEquations() const { return equations_; }
    const std::vector<ComponentResult>& parts() const { return parts_; }
    const GlobalTest& global() const { return global_; }
    const Tester& tester() const { return *tester_; }
    double level() const { return level_; }  // significance of one test
    bool IsHeld(std::size_t station) const { return isHeld_[station]; }

    // Occupations of two and more vectors that are tied to their stations.
    std::vector<Occupation> Shared() const;

    // Of what has weight.
    BlunderTest TestVector(std::size_t v) const;
    BlunderTest TestOccupation(const Occupation& occupation) const;
    BlunderTest TestKnown(std::size_t station) const;
    Eigen::Matrix3d ResidualCovariance(std::size_t v) const;  // m^2

    // Of a vector without weight.
    Misfit MisfitOf(std::size_t v) const;
    BlunderTest TestMisfit(std::size_t v, const Misfit& misfit) const;

  private:
    void Solve(Datum datum);
    bool SetWeak(std::set<std::size_t>& weak) const;
    void ListParts();
    void PlaceDatum(Datum datum, const std::set<std::size_t>& weak);
    bool HoldToKnown(const std::vector<std::size_t>& stations);
    std::size_t StationToHold(const std::vector<std::size_t>& stations) const;
    void SumUp();
    Eigen::Matrix3d AdjustedCovariance(const Difference& difference) const;
    Probe ProbeOfOne(std::size_t difference) const;

    struct Member;
    Probe ProbeOfGroup(const std::vector<Member>& members) const;

    const Network& network_;
    const Graph& graph_;
    const AdjustmentOptions& options_;
    const State state_;
    std::size_t heldStation_;
    Model model_;
    std::vector<ComponentResult> parts_;
    std::vector<bool> isHeld_;  // by node
    std::shared_ptr<const LeastSquares> equations_;
    GlobalTest global_;
    double level_ = 0.0;
    std::optional<Tester> tester_;
};

}  // namespace vornel::network
