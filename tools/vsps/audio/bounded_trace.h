// What happened over time, in no more memory for an hour than for a minute.
#pragma once

#include <cstddef>
#include <vector>

// Points for units of time of one length. When it is full, each two neighbours become one: Point has "+=" that takes the
// next one in, and `unitsPerPoint` doubles.
template <typename Point>
class BoundedTrace {
  public:
    explicit BoundedTrace(std::size_t capacity) : capacity_(capacity) {}  // even

    void add(const Point& unit) {
        if (units_ % unitsPerPoint_ != 0) {
            points_.back() += unit;
        } else {
            if (points_.size() == capacity_) halve();
            points_.push_back(unit);
        }
        units_++;
    }

    const std::vector<Point>& points() const { return points_; }
    std::vector<Point>& points() { return points_; }
    std::size_t unitsPerPoint() const { return unitsPerPoint_; }  // the last point may be of fewer
    std::size_t units() const { return units_; }

  private:
    void halve() {
        for (std::size_t i = 0; i < points_.size(); i += 2) {
            points_[i / 2] = points_[i];
            points_[i / 2] += points_[i + 1];
        }
        points_.resize(points_.size() / 2);
        unitsPerPoint_ *= 2;
    }

    std::vector<Point> points_;
    std::size_t capacity_, unitsPerPoint_ = 1, units_ = 0;
};
