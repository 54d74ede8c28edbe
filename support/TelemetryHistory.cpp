#include "support/TelemetryHistory.h"

#include <cmath>
#include <limits>

SampleRing::SampleRing(int capacity, qint64 bucketMs)
    : m_points(qMax(1, capacity))
    , m_bucketMs(qMax<qint64>(1, bucketMs)) {}

void SampleRing::append(qint64 timeMs, double value) {
    const QPointF point(double(timeMs), value);
    if (m_size > 0) {
        QPointF &last = m_points[(m_start + m_size - 1) % m_points.size()];
        if (qint64(last.x()) / m_bucketMs == timeMs / m_bucketMs) {
            last = point;
            return;
        }
    }
    if (m_size < m_points.size()) {
        m_points[(m_start + m_size) % m_points.size()] = point;
        ++m_size;
        return;
    }
    m_points[m_start] = point;
    m_start = (m_start + 1) % m_points.size();
}

QVector<QPointF> SampleRing::range(qint64 fromMs, qint64 toMs) const {
    QVector<QPointF> out;
    for (int i = 0; i < m_size; ++i) {
        const QPointF p = at(i);
        if (p.x() >= double(fromMs) && p.x() <= double(toMs))
            out.append(p);
    }
    return out;
}

void SampleRing::clear() {
    m_start = 0;
    m_size = 0;
}

TelemetryHistory::TelemetryHistory(int series, int capacity, qint64 bucketMs)
    : m_rings(series, SampleRing(capacity, bucketMs)) {}

void TelemetryHistory::add(qint64 timeMs, const QVector<double> &values) {
    const int n = qMin(values.size(), m_rings.size());
    for (int i = 0; i < n; ++i) {
        if (!std::isnan(values[i]))
            m_rings[i].append(timeMs, values[i]);
    }
    m_lastTime = qMax(m_lastTime, timeMs);
}

qint64 TelemetryHistory::firstTime() const {
    qint64 first = std::numeric_limits<qint64>::max();
    for (const SampleRing &r : m_rings) {
        if (r.size() > 0)
            first = qMin(first, qint64(r.at(0).x()));
    }
    return first == std::numeric_limits<qint64>::max() ? 0 : first;
}

void TelemetryHistory::clear() {
    for (SampleRing &r : m_rings)
        r.clear();
    m_lastTime = 0;
}
