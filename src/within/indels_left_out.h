// Pairwise differences of a sample as the tests of neutrality on sequences want them.
#pragma once

#include <memory>
#include <utility>

#include "foundation/rect_mat.h"
#include "model/popul_dna.h"
#include "model/popul_rflp.h"
#include "run/settings.h"

namespace mnd {

// As long as it lives, the distance of a sample is the number of differences without indels and
// without gamma correction, with mean_pairwise_diff computed from it. What distances and
// diversity the sample had before is put back at the end, since later tasks and summaries rely on
// it; the number of sites with substitutions does not depend on indels.
//   Sample   PopulDNA or PopulRFLP, its loci compared
template <class Sample>
class IndelsLeftOut {
public:
    IndelsLeftOut(Sample& sample, settings& s)
        : sample_(sample),
          del_weight_(sample.del_weight),
          distance_method_(std::exchange(sample.distance_method, 0)),
          gamma_a_(std::exchange(sample.gamma_a, 0.0)),
          max_dist_(sample.max_dist),
          dist_mat_(std::move(sample.dist_mat)),
          values_{sample.mean_pairwise_diff, sample.sd_pairwise_diff, sample.nucl_diversity,
                  sample.sd_nucl_diversity,  sample.theta_pi,         sample.sd_theta_pi} {
        sample.del_weight = 0.0;
        computed_ = sample.compute_distance_matrix(nullptr, &s, 0) != 0 && sample.dist_mat != nullptr &&
                    sample.compute_molecular_diversity(s) != 0;
        if (!computed_) sample.mean_pairwise_diff = 0.0;
    }
    ~IndelsLeftOut() {
        sample_.del_weight = del_weight_;
        sample_.distance_method = distance_method_;
        sample_.gamma_a = gamma_a_;
        sample_.max_dist = max_dist_;
        sample_.dist_mat = std::move(dist_mat_);
        sample_.mean_pairwise_diff = values_.mean_pairwise_diff;
        sample_.sd_pairwise_diff = values_.sd_pairwise_diff;
        sample_.nucl_diversity = values_.nucl_diversity;
        sample_.sd_nucl_diversity = values_.sd_nucl_diversity;
        sample_.theta_pi = values_.theta_pi;
        sample_.sd_theta_pi = values_.sd_theta_pi;
    }
    IndelsLeftOut(const IndelsLeftOut&) = delete;
    IndelsLeftOut& operator=(const IndelsLeftOut&) = delete;

    // False when the distances could not be computed, which was reported.
    bool computed() const { return computed_; }

private:
    struct Values {
        double mean_pairwise_diff;
        double sd_pairwise_diff;
        double nucl_diversity;
        double sd_nucl_diversity;
        double theta_pi;
        double sd_theta_pi;
    };

    Sample& sample_;
    double del_weight_;
    int distance_method_;
    double gamma_a_;
    int max_dist_;
    std::unique_ptr<RectMat> dist_mat_;  // owned: the matrix that the sample had
    Values values_;
    bool computed_ = false;
};

}  // namespace mnd
