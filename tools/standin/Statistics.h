#pragma once

#include <cmath>
#include <cstdint>

namespace standin {

// Count, mean and standard deviation of times in milliseconds, kept without keeping the times.
class Statistics
{
public:
    void add(double millis)
    {
        ++count_;
        const double distance = millis - mean_;
        mean_ += distance / static_cast<double>(count_);
        squares_ += distance * (millis - mean_);
    }

    std::int64_t count() const { return count_; }
    double mean() const { return mean_; }
    double deviation() const { return count_ == 0 ? 0 : std::sqrt(squares_ / static_cast<double>(count_)); }

private:
    std::int64_t count_ = 0;
    double mean_ = 0;
    double squares_ = 0;
};

} // namespace standin
