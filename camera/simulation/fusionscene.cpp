#include "camera/simulation/fusionscene.h"

#include <utility>

namespace korvane::simulation {

using namespace fusiongeometry;

namespace {

Canvas paintWall(const FusionStage& stage)
{
    Canvas canvas(eventWidth, eventHeight, Canvas::Edge::Wraps);
    for (int y = 0; y < eventHeight; ++y) {
        for (int x = 0; x < eventWidth; ++x)
            canvas.set(x, y, stage.wallLight(eventWidth - x, y));
    }
    return canvas;
}

} // namespace

FusionScene::FusionScene(std::shared_ptr<const FusionStage> watched)
    : LayeredScene(eventWidth, eventHeight), stage(std::move(watched))
{
    for (const StageActor& actor : stage->actors()) {
        const Canvas picture = actor.picture(1.0, true);
        layers.push_back(std::make_shared<PictureLayer>(std::make_shared<const LayerImage>(picture)));
        sizes.push_back({static_cast<double>(picture.width()), static_cast<double>(picture.height())});
        addBehind(layers.back());
    }
    addBehind(std::make_shared<PictureLayer>(std::make_shared<const LayerImage>(paintWall(*stage))));
}

/// Left upper corner of an actor's picture. The middle of pixel (x, y) sees the point (1280 - x, y).
Point FusionScene::placeOf(std::size_t actor, double seconds) const
{
    const Point middle = stage->actors()[actor].placeAt(seconds);
    return {eventWidth + 0.5 - middle.x - sizes[actor].x / 2, middle.y + 0.5 - sizes[actor].y / 2};
}

void FusionScene::moveLayers(double before, double after)
{
    for (std::size_t i = 0; i < layers.size(); ++i) {
        const Point from = placeOf(i, before);
        const Point to = placeOf(i, after);
        PictureLayer::Motion motion;
        motion.scrollBefore = -from.x;
        motion.scrollAfter = -to.x;
        motion.topBefore = from.y;
        motion.topAfter = to.y;
        layers[i]->move(motion);
    }
}

} // namespace korvane::simulation
