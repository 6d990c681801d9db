#pragma once

#include <QString>

#include <cstdint>

// What a text typed for the accumulation time means. Any thread.

/// Whether the text ends with "ms" or "us", in any case.
bool hasTimeUnit(const QString& text);
/// Microseconds, cut to whole ones; 0 without a unit, without a number or below zero.
uint64_t parseAccumulationTime(const QString& text);
/// Above nothing and at most a second.
bool isAccumulationTime(uint64_t microseconds);
