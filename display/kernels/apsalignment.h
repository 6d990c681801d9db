#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvane::kernels {

/// An image of 3 bytes a pixel (blue, green, red), rows `stride` bytes apart.
struct BgrView
{
    const std::uint8_t* pixels;
    std::size_t stride;
    int width;
    int height;
};

/// Samples an intensity frame at the pixels of the event sensor: nearest neighbour about the common centre,
/// at the ratio of the two sensors' pixel pitches. Immutable once made; any thread.
class ApsAlignment
{
public:
    /// Intensity pixels for one pixel of the event sensor; the bits are 0x405682A6. The optics' figure, not
    /// the ratio of the sizes.
    static constexpr float scale = 3.3517241F;
    static constexpr int dvsWidth = 1280;
    static constexpr int dvsHeight = 720;
    static constexpr int apsWidth = 3840;
    static constexpr int apsHeight = 2160;

    explicit ApsAlignment(int sourceWidth = apsWidth, int sourceHeight = apsHeight,
                          int destinationWidth = dvsWidth, int destinationHeight = dvsHeight);

    /// Writes every pixel of the destination, of 3 bytes in the order of the source: white where the source
    /// does not reach. The source may be smaller than announced, it is never read outside.
    void align(const BgrView& source, std::uint8_t* destination, std::size_t destinationStride) const;

    /// The source column of a destination column, and the row of a row; outside the source where it does not
    /// reach.
    int sourceColumn(int column) const { return columns[static_cast<std::size_t>(column)]; }
    int sourceRow(int row) const { return rows[static_cast<std::size_t>(row)]; }

private:
    std::vector<int> columns;
    std::vector<int> rows;
};

} // namespace korvane::kernels
