#include "network/loops.h"

#include <Eigen/Cholesky>
#include <algorithm>
#include <array>
#include <deque>
#include <map>
#include <tuple>
#include <utility>

#include "network/dense.h"
#include "network/graph.h"
#include "network/statistics.h"

namespace vornel::network {
namespace {

using Indices = std::vector<std::size_t>;
using Pair = std::pair<std::size_t, std::size_t>;  // stations, the smaller index first

// What is known of a loop before it is decided whether it is listed.
struct Closure {
    Indices vectors;
    std::size_t start = kNone;
    double statistic = 0.0;
};

class Finder {
  public:
    Finder(const Network& network, const LoopOptions& options)
        : network_(network), options_(options), graph_(MakeGraph(network)) {
        neighbours_.resize(network.stations.size());
        for (std::size_t v = 0; v < network.vectors.size(); ++v) {
            const Ends& ends = graph_.ends[v];
            if (ends.base != kNone) {
                joining_[std::minmax(ends.base, ends.rover)].push_back(v);
            }
        }
        for (auto& [pair, vectors] : joining_) {
            std::stable_sort(vectors.begin(), vectors.end(), [&](std::size_t a, std::size_t b) {
                return network.vectors[a].epoch < network.vectors[b].epoch;
            });
            neighbours_[pair.first].push_back(pair.second);
            neighbours_[pair.second].push_back(pair.first);
        }
        for (Indices& list : neighbours_) {
            std::sort(list.begin(), list.end());
        }
    }

    LoopReport Find() {
        FindRepeated();
        FindTriangles();
        FindCycles();
        LoopReport report;
        const std::size_t found = repeated_.size() + triangles_.size() + cycles_.size();
        report.level = options_.level;
        if (found > 0) {
            report.level =
                std::min(report.level, LevelOfEach(options_.familyLevel, static_cast<int>(found)));
        }
        const double critical = ChiSquareCritical(report.level, 3);
        report.repeated = List(repeated_, LoopKind::kRepeated, critical, report.loops);
        report.triangles = List(triangles_, LoopKind::kTriangle, critical, report.loops);
        report.cycles = List(cycles_, LoopKind::kCycle, critical, report.loops);
        report.triangles.isComplete = isComplete_;
        Name(critical, report);
        return report;
    }

  private:
    void FindRepeated() {
        for (const auto& [pair, vectors] : joining_) {
            for (std::size_t i = 0; i + 1 < vectors.size(); ++i) {
                Add(repeated_, {vectors[i], vectors[i + 1]}, pair.first);
            }
            if (vectors.size() > 2) {
                Add(repeated_, {vectors.back(), vectors.front()}, pair.first);
            }
        }
    }

    void FindTriangles() {
        for (const auto& [pair, vectors] : joining_) {
            const auto& [a, b] = pair;
            Indices common;
            std::set_intersection(neighbours_[a].begin(), neighbours_[a].end(),
                                  neighbours_[b].begin(), neighbours_[b].end(),
                                  std::back_inserter(common));
            for (auto c = std::upper_bound(common.begin(), common.end(), b); c != common.end();
                 ++c) {
                if (!AddTriangles({vectors, joining_.at({b, *c}), joining_.at({a, *c})}, a)) {
                    isComplete_ = false;
                    return;
                }
            }
        }
    }

    // Triangles of three stations, so that every vector between them stands in one; first those of
    // one session.
    bool AddTriangles(const std::array<Indices, 3>& sides, std::size_t start) {
        std::array<std::vector<bool>, 3> isUsed;
        std::size_t most = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            isUsed[k].resize(sides[k].size());
            most = std::max(most, sides[k].size());
        }
        if (triangles_.size() + most > options_.largestNumber) {
            return false;
        }
        if (most > 1) {
            for (std::size_t i = 0; i < sides[0].size(); ++i) {
                const std::size_t j = UnusedOfSession(sides[1], isUsed[1], sides[0][i]);
                const std::size_t k = UnusedOfSession(sides[2], isUsed[2], sides[0][i]);
                if (j != kNone && k != kNone) {
                    Add(triangles_, {sides[0][i], sides[1][j], sides[2][k]}, start);
                    isUsed[0][i] = isUsed[1][j] = isUsed[2][k] = true;
                }
            }
        }
        std::array<Indices, 3> left;
        most = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            for (std::size_t i = 0; i < sides[k].size(); ++i) {
                if (!isUsed[k][i]) {
                    left[k].push_back(sides[k][i]);
                }
            }
            most = std::max(most, left[k].size());
        }
        const auto pick = [&](std::size_t k, std::size_t i) {
            return i < left[k].size() ? left[k][i] : sides[k][i % sides[k].size()];
        };
        for (std::size_t i = 0; i < most; ++i) {
            Add(triangles_, {pick(0, i), pick(1, i), pick(2, i)}, start);
        }
        return true;
    }

    std::size_t UnusedOfSession(const Indices& vectors, const std::vector<bool>& isUsed,
                                std::size_t like) const {
        for (std::size_t i = 0; i < vectors.size(); ++i) {
            if (!isUsed[i] &&
                network_.vectors[vectors[i]].session == network_.vectors[like].session) {
                return i;
            }
        }
        return kNone;
    }

    // The best vector between two stations, by the trace of its covariance.
    std::size_t BestJoining(std::size_t a, std::size_t b) const {
        const Indices& vectors = joining_.at(std::minmax(a, b));
        return *std::min_element(vectors.begin(), vectors.end(), [&](std::size_t i, std::size_t j) {
            const double ti = ToEigen(network_.vectors[i].covariance).trace();
            const double tj = ToEigen(network_.vectors[j].covariance).trace();
            return std::tie(ti, i) < std::tie(tj, j);
        });
    }

    void FindCycles() {
        const std::size_t count = network_.stations.size();
        Indices order(count);
        for (std::size_t i = 0; i < count; ++i) {
            order[i] = i;
        }
        std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
            return neighbours_[a].size() > neighbours_[b].size();
        });
        std::vector<std::size_t> depth(count, kNone), parent(count, kNone), way(count, kNone);
        for (const std::size_t root : order) {
            if (depth[root] != kNone) {
                continue;
            }
            depth[root] = 0;
            std::deque<std::size_t> queue{root};
            while (!queue.empty()) {
                const std::size_t at = queue.front();
                queue.pop_front();
                for (const std::size_t next : neighbours_[at]) {
                    if (depth[next] == kNone) {
                        depth[next] = depth[at] + 1;
                        parent[next] = at;
                        way[next] = BestJoining(at, next);
                        queue.push_back(next);
                    }
                }
            }
        }
        for (const auto& [pair, joining] : joining_) {
            const std::size_t v = BestJoining(pair.first, pair.second);
            const Ends& ends = graph_.ends[v];
            if (way[ends.base] == v || way[ends.rover] == v) {
                continue;
            }
            // From the rover back to the base: up to the first common station, then down.
            Indices up, down;
            std::size_t a = ends.rover, b = ends.base;
            while (a != b) {
                if (depth[a] >= depth[b]) {
                    up.push_back(way[a]);
                    a = parent[a];
                } else {
                    down.push_back(way[b]);
                    b = parent[b];
                }
            }
            Indices vectors{v};
            vectors.insert(vectors.end(), up.begin(), up.end());
            vectors.insert(vectors.end(), down.rbegin(), down.rend());
            if (vectors.size() > 3) {
                Add(cycles_, vectors, ends.base);
            }
        }
    }

    void Add(std::vector<Closure>& list, Indices vectors, std::size_t start) const {
        Closure closure{std::move(vectors), start, 0.0};
        closure.statistic = Evaluate(closure, LoopKind::kTriangle).statistic;
        list.push_back(std::move(closure));
    }

    Loop Evaluate(const Closure& closure, LoopKind kind) const {
        Loop loop;
        loop.kind = kind;
        loop.isOfOneSession = true;
        Eigen::Vector3d sum = Eigen::Vector3d::Zero();
        Eigen::Matrix3d covariance = Eigen::Matrix3d::Zero();
        std::size_t at = closure.start;
        std::size_t last = closure.vectors.back();
        for (const std::size_t v : closure.vectors) {
            const NetworkVector& vector = network_.vectors[v];
            const Ends& ends = graph_.ends[v];
            const bool forward = ends.base == at;
            loop.sides.push_back({v, forward});
            loop.stations.push_back(at);
            sum += (forward ? 1.0 : -1.0) * ToEigen(vector.vector);
            const double length = session::Length(vector.vector);
            const double scale = options_.added.ppm * 1e-6 * length;
            covariance += ToEigen(vector.covariance) + scale * scale * Eigen::Matrix3d::Identity();
            loop.length += length;
            if (vector.session != network_.vectors[last].session) {
                loop.isOfOneSession = false;
                covariance += 2.0 * Centring(at);
            }
            at = forward ? ends.rover : ends.base;
            last = v;
        }
        loop.misclosure = ToVector3(sum);
        loop.size = sum.norm();
        loop.ppm = loop.length > 0.0 ? loop.size / loop.length * 1e6 : 0.0;
        loop.covariance = ToSymmetric(covariance);
        loop.statistic = sum.dot(covariance.llt().solve(sum));
        return loop;
    }

    Eigen::Matrix3d Centring(std::size_t station) const {
        const double horizontal = options_.added.centringHorizontal;
        const double vertical = options_.added.centringVertical;
        if (horizontal == 0.0 && vertical == 0.0) {
            return Eigen::Matrix3d::Zero();
        }
        return ToEigen(CovarianceFromNeu(network_.stations[station].approximate,
                                         {horizontal, horizontal, vertical}));
    }

    LoopCount List(std::vector<Closure>& closures, LoopKind kind, double critical,
                   std::vector<Loop>& loops) const {
        std::stable_sort(closures.begin(), closures.end(), [](const Closure& a, const Closure& b) {
            return a.statistic > b.statistic;
        });
        LoopCount count;
        count.found = closures.size();
        count.listed = std::min(closures.size(), options_.largestList);
        for (const Closure& closure : closures) {
            count.bad += closure.statistic > critical ? 1 : 0;
        }
        for (std::size_t i = 0; i < count.listed; ++i) {
            Loop loop = Evaluate(closures[i], kind);
            const Vector3& place = network_.stations[loop.stations.front()].approximate;
            loop.misclosureNeu = session::ToNeu(session::ToGeodetic(place), loop.misclosure);
            loop.sigmaNeu = SigmaNeu(place, loop.covariance);
            loop.probability = ChiSquareTail(loop.statistic, 3);
            loop.isBad = loop.statistic > critical;
            loops.push_back(std::move(loop));
        }
        return count;
    }

    void Name(double critical, LoopReport& report) const {
        std::vector<VectorInLoops> counts(network_.vectors.size());
        std::vector<Indices> badWith(counts.size());  // by vector: indices into `bad`
        std::vector<const Indices*> bad;
        for (const auto* list : {&repeated_, &triangles_, &cycles_}) {
            for (const Closure& closure : *list) {
                const bool isBad = closure.statistic > critical;
                for (const std::size_t v : closure.vectors) {
                    ++counts[v].loops;
                    if (isBad) {
                        ++counts[v].badLoops;
                        badWith[v].push_back(bad.size());
                    }
                }
                if (isBad) {
                    bad.push_back(&closure.vectors);
                }
            }
        }
        for (std::size_t v = 0; v < counts.size(); ++v) {
            counts[v].vector = v;
            if (counts[v].badLoops > 0) {
                report.vectors.push_back(counts[v]);
            }
        }
        std::stable_sort(report.vectors.begin(), report.vectors.end(), SaysMore);

        std::vector<bool> isExplained(bad.size());
        std::size_t remaining = bad.size();
        while (remaining > 0) {
            NamedByLoops named;
            const VectorInLoops* most = nullptr;
            for (const VectorInLoops& entry : report.vectors) {
                const VectorInLoops& now = counts[entry.vector];
                if (most == nullptr || SaysMore(now, *most)) {
                    most = &now;
                    named.equals.clear();
                } else if (!SaysMore(*most, now)) {
                    named.equals.push_back(now.vector);
                }
            }
            named.vector = most->vector;
            named.badLoops = most->badLoops;
            named.remaining = remaining;
            named.loops = most->loops;
            report.named.push_back(named);
            for (const std::size_t b : badWith[named.vector]) {
                if (!isExplained[b]) {
                    isExplained[b] = true;
                    --remaining;
                    for (const std::size_t v : *bad[b]) {
                        --counts[v].badLoops;
                    }
                }
            }
        }
    }

    // More bad loops, or as many of fewer.
    static bool SaysMore(const VectorInLoops& a, const VectorInLoops& b) {
        return a.badLoops != b.badLoops ? a.badLoops > b.badLoops : a.loops < b.loops;
    }

    const Network& network_;
    const LoopOptions& options_;
    Graph graph_;
    std::map<Pair, Indices> joining_;
    std::vector<Indices> neighbours_;
    std::vector<Closure> repeated_, triangles_, cycles_;
    bool isComplete_ = true;
};

}  // namespace

LoopReport FindLoops(const Network& network, const LoopOptions& options) {
    return Finder(network, options).Find();
}

}  // namespace vornel::network
