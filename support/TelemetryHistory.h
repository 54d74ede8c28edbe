#pragma once

#include <QPointF>
#include <QVector>

// A fixed-capacity ring of (time in ms since the epoch, value) points: when full, the oldest point
// makes room. Points closer together than the ring's bucket share one slot (the newest value wins), so
// a fast telemetry period does not shorten the time the ring covers.
class SampleRing {
public:
    SampleRing(int capacity, qint64 bucketMs);

    void append(qint64 timeMs, double value);
    int size() const { return m_size; }
    QPointF at(int i) const { return m_points[(m_start + i) % m_points.size()]; }
    // The points with from <= time <= to, oldest first.
    QVector<QPointF> range(qint64 fromMs, qint64 toMs) const;
    void clear();

private:
    QVector<QPointF> m_points;
    qint64 m_bucketMs;
    int m_start = 0;
    int m_size = 0;
};

// One ring per telemetry series (the columns of TelemetrySeries): bounded memory however long the
// device is watched.
class TelemetryHistory {
public:
    // An hour of one point a second by default.
    static constexpr int DefaultCapacity = 3600;
    static constexpr qint64 DefaultBucketMs = 1000;

    explicit TelemetryHistory(int series, int capacity = DefaultCapacity, qint64 bucketMs = DefaultBucketMs);

    // One telemetry round; NaN values leave their series without a point.
    void add(qint64 timeMs, const QVector<double> &values);
    const SampleRing &series(int index) const { return m_rings[index]; }
    int seriesCount() const { return m_rings.size(); }
    // The time span covered by any series; both 0 while empty.
    qint64 firstTime() const;
    qint64 lastTime() const { return m_lastTime; }
    void clear();

private:
    QVector<SampleRing> m_rings;
    qint64 m_lastTime = 0;
};
