#pragma once

#include "camera/simulation/fusionstage.h"
#include "camera/simulation/layeredscene.h"

#include <memory>
#include <vector>

namespace korvane::simulation {

/// A stage as the event sensor of a fusion camera sees it: mirrored, so that the point (u, v) of the stage
/// falls on column 1280 - u of row v. One thread at a time.
class FusionScene : public LayeredScene
{
public:
    explicit FusionScene(std::shared_ptr<const FusionStage> watched);

protected:
    void moveLayers(double before, double after) override;

private:
    Point placeOf(std::size_t actor, double seconds) const;

    std::shared_ptr<const FusionStage> stage;
    std::vector<std::shared_ptr<PictureLayer>> layers;
    std::vector<Point> sizes; // of the pictures, pixels
};

} // namespace korvane::simulation
