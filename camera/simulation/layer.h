#pragma once

#include "camera/simulation/layerimage.h"
#include "camera/simulation/pixelkernels.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace korvane::simulation {

/// One of the flat things that a scene is stacked from. One thread at a time.
class Layer
{
public:
    Layer() = default;
    virtual ~Layer() = default;
    Layer(const Layer&) = delete;
    Layer& operator=(const Layer&) = delete;

    /// Chooses the row that the next calls are for; false when nothing of the layer lies in it during this
    /// frame.
    virtual bool beginRow(int row) = 0;
    /// Fills in the Cover bits of each segment of the row.
    virtual void cover(std::uint8_t* bits, int segments) = 0;
    /// Into how many steps a frame of strong content in this row is to be cut: 1, 2, 4, 8 or 16.
    virtual int steps() const = 0;
    /// Whether nothing in this row moves by more than a quarter of a pixel in this frame.
    virtual bool creeps() const = 0;
    /// Draws a segment at a point of the frame, over what is there or instead of it.
    virtual void draw(int segment, int point, bool instead, std::int16_t* out) = 0;

protected:
    /// So many steps that nothing travels more than a pixel in one.
    static int stepsFor(double pixelsPerFrame);
};

/// A picture that slides over the image, whole and without end to the sides when it wraps.
class PictureLayer : public Layer
{
public:
    /// Where the picture is at the start and the end of a frame.
    struct Motion
    {
        double scrollBefore = 0; ///< column of the picture under column 0 of the image
        double scrollAfter = 0;
        double anchor = 0; ///< column of the image where rows of different scales lie above each other
        double topBefore = 0; ///< row of the image on which the picture's first row lies
        double topAfter = 0;
        double phaseBefore = 0; ///< which of the phases is seen, 0 to 1, around and around
        double phaseAfter = 0;
    };

    /// The picture's rows are those of its phases one after the other, each phase of equal height.
    explicit PictureLayer(std::shared_ptr<const LayerImage> shown, int phaseCount = 1);

    void move(const Motion& next);

    bool beginRow(int row) override;
    void cover(std::uint8_t* bits, int segments) override;
    int steps() const override;
    bool creeps() const override;
    void draw(int segment, int point, bool instead, std::int16_t* out) override;

private:
    struct Track // of a row of the picture; columns times 65536
    {
        std::int64_t start = 0;
        std::int64_t travel = 0;
        int length = 0;
    };
    struct Spot
    {
        int column = -1; // below 0: beside the picture
        std::int16_t shift = 0;
    };
    Track trackOf(int pictureRow) const;
    const Track& track(int pictureRow) const;
    Spot spot(const Track& at, int segment, int point) const;
    int phaseRow(int point) const;
    double travelled() const;

    std::shared_ptr<const LayerImage> image;
    const PixelKernels& kernels;
    int phases;
    int phaseHeight;
    Motion motion;
    std::int64_t place = 0; // of the chosen row in the picture at the start of the frame, rows times 65536
    std::int64_t lift = 0; // and how far it moves in the frame
    int firstRow = 0; // of the picture that the chosen row meets in the frame
    int lastRow = 0;
    std::vector<Track> tracks; // of these rows, or one for all when the picture is uniform
};

} // namespace korvane::simulation
