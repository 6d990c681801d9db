#pragma once

#include "camera/simulation/canvas.h"

#include <cstdint>
#include <vector>

namespace korvane::simulation::street {

/// Where things stand in the image, pixels. Distances along the street are pixels at the foot of the houses.
inline constexpr int imageWidth = 1280;
inline constexpr int imageHeight = 720;
inline constexpr int margin = 8; ///< rows painted beyond the image for its swaying
inline constexpr int horizonRow = 330;
inline constexpr int houseRow = 452; ///< foot of the houses
inline constexpr int treeRow = 486; ///< foot of trees and lamps, on the far pavement
inline constexpr int houseTurn = 4096; ///< length after which the houses come again
inline constexpr int farTurn = 2048;
inline constexpr int groundTurn = 2048;

/// How many pixels of row `row` of the ground a pixel at the foot of the houses is.
constexpr double groundScale(double row)
{
    return (row - horizonRow) / (houseRow - horizonRow);
}

/// Sky, clouds and the far skyline, from row -margin.
Canvas paintSkyline(std::uint64_t seed);
/// The row of houses, from row -margin; bare above the roofs and in the gaps.
Canvas paintHouses(std::uint64_t seed);
/// Trees and street lamps, from row -margin.
Canvas paintTrees(std::uint64_t seed);
/// Pavements and road, one row of shades per image row from houseRow to the lower edge and margin.
std::vector<std::vector<float>> paintGround(std::uint64_t seed);

struct CarLook
{
    int length = 200; ///< pixels
    float body = 0.5F; ///< shades
    float glass = 0.06F;
    bool van = false;
    bool facesLeft = false;
};
/// Where a car's parts are within its picture, pixels.
struct CarPlan
{
    int width = 0;
    int height = 0;
    double wheelRadius = 0;
    double frontWheel = 0; ///< columns of the hubs
    double rearWheel = 0;
    double hubRow = 0;
    int wheelRow = 0; ///< the row on which it stands
};
CarPlan planCar(const CarLook& look);
Canvas paintCar(const CarLook& look);
inline constexpr int wheelPhases = 24;
inline constexpr int wheelSpokes = 5;
/// A rim in wheelPhases positions, one below the other, that lead from one spoke to the next.
Canvas paintWheel(double radius);

} // namespace korvane::simulation::street
