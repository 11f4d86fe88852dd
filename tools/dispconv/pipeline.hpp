// Chooses the kernels for one job and runs them on every frame.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "frame.hpp"
#include "options.hpp"
#include "subpicture.hpp"
#include "surface.hpp"

namespace dispconv::tool {

struct Job {
    SurfaceFormat format = SurfaceFormat::rgb32;
    Stretch stretch = Stretch::none;
    int field = -1;             // -1 whole frames, 0 top, 1 bottom
    bool subpicture = false;
    double contrast = 1.0, brightness = 0.0, saturation = 1.0;
};

// The chain of kernels for a job, with every buffer it needs. Building it checks the
// combination and throws UsageError for one the kernels cannot do; running it cannot fail.
class Pipeline {
public:
    Pipeline(const Job& job, const Geometry& geometry, Chroma source_chroma);

    // "loadimage_rgb32_ajust", or several kernels joined by " + ".
    std::string kernels() const;
    // True when a kernel in the chain scales chroma with the contrast gain, so that the
    // saturation setting has no effect.
    bool ignores_saturation() const { return chroma_follows_luma_; }
    int scale_x() const { return scale_x_; }
    int scale_y() const { return scale_y_; }
    // Size of the picture in the output surface, padding excluded.
    int output_width() const { return geometry_.width * scale_x_; }
    int output_height() const { return geometry_.height * scale_y_; }

    // Runs the chain on one frame; returns the written surface. Loads the adjust constants.
    const Surface& run(const SourceFrame& frame, const SubPicture* sub);

private:
    using Step = std::function<void(const SourceFrame&, const SubPicture*)>;
    void add(const char* kernel, Step step);
    void plan();
    void plan_mix(const Job& job);
    void plan_stretch(const Job& job);
    void plan_load(const Job& job);
    // Converts the YUY2 intermediate into the surface, applying the adjustment if `adjusted`.
    void finish_from_yuy2(bool adjusted);
    PlanarView mixed_view();

    Job job_;
    Geometry geometry_;
    Chroma chroma_;
    int scale_x_ = 1, scale_y_ = 1;
    bool chroma_follows_luma_ = false;
    ajust_contrast_info settings_{};
    Surface surface_, yuy2_, mixed_;
    std::vector<std::string> names_;
    std::vector<Step> steps_;
};

}  // namespace dispconv::tool
