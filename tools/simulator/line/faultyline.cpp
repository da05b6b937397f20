// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "faultyline.h"

#include <algorithm>
#include <utility>

FaultyLine::FaultyLine(CameraLine &line, QObject *parent)
    : CameraLine(parent)
    , m_line(line)
{
    m_clock.start();
    for (const Fault::Direction direction : {Fault::Request, Fault::Reply}) {
        Lane &lane = m_lanes.at(direction);
        lane.stallTimer.setSingleShot(true);
        lane.stallTimer.setInterval(FrameReader::kStall);
        lane.deliveryTimer.setSingleShot(true);
        lane.deliveryTimer.setTimerType(Qt::PreciseTimer);
        connect(&lane.stallTimer, &QTimer::timeout, this, [this, direction] {
            handle(direction, m_lanes.at(direction).reader.dropPartial());
        });
        connect(&lane.deliveryTimer, &QTimer::timeout, this,
                [this, direction] { deliver(direction); });
    }
    connect(&m_line, &CameraLine::bytesReceived, this,
            [this](const QByteArray &bytes) { take(Fault::Request, bytes); });
}

void FaultyLine::setFaults(const FaultPlan &plan, quint32 seed)
{
    loseEverything();
    m_hasFaults = !plan.isEmpty();
    m_injector = FaultInjector(plan, seed);
}

bool FaultyLine::plug(QString *error)
{
    return m_line.plug(error);
}

void FaultyLine::unplug()
{
    loseEverything();
    m_line.unplug();
}

bool FaultyLine::isPlugged() const
{
    return m_line.isPlugged();
}

void FaultyLine::write(const QByteArray &bytes)
{
    if (!m_hasFaults) {
        m_line.write(bytes);
    } else if (isPlugged()) {
        take(Fault::Reply, bytes);
    }
}

void FaultyLine::take(Fault::Direction direction, const QByteArray &bytes)
{
    if (!m_hasFaults) {
        emit bytesReceived(bytes);
        return;
    }
    Lane &lane = m_lanes.at(direction);
    handle(direction, lane.reader.take(bytes));
    // The camera finishes what it begins, on a slow line later than this.
    if (direction == Fault::Request && lane.reader.hasPartial()) {
        lane.stallTimer.start();
    } else {
        lane.stallTimer.stop();
    }
}

void FaultyLine::handle(Fault::Direction direction, const QVector<FrameReader::Piece> &pieces)
{
    QStringList notes;
    for (const FrameReader::Piece &piece : pieces) {
        const QVector<Delivery> deliveries = piece.kind == FrameReader::Frame
            ? m_injector.pass(direction, piece.bytes, &notes)
            : m_injector.passOther(direction, piece.bytes);
        m_lanes.at(direction).queue.add(deliveries, now());
        for (const Delivery &delivery : deliveries) {
            if (delivery.standstill > std::chrono::milliseconds::zero()) {
                for (Lane &lane : m_lanes) {
                    lane.queue.holdUntil(now() + delivery.standstill);
                }
            }
        }
    }
    for (Lane &lane : m_lanes) {
        schedule(lane);
    }
    for (const QString &note : std::as_const(notes)) {
        emit faultApplied(note);
    }
}

// Always out of a timer: a line may not be hung up while it hands over bytes.
void FaultyLine::deliver(Fault::Direction direction)
{
    Lane &lane = m_lanes.at(direction);
    while (const auto delivery = lane.queue.take(now())) {
        if (!delivery->bytes.isEmpty()) {
            if (direction == Fault::Request) {
                emit bytesReceived(delivery->bytes);
            } else {
                m_line.write(delivery->bytes);
            }
        }
        if (delivery->hangUp) {
            unplug();
            emit hungUp();
        }
    }
    schedule(lane);
}

void FaultyLine::schedule(Lane &lane)
{
    const auto due = lane.queue.nextDue();
    if (!due) {
        lane.deliveryTimer.stop();
        return;
    }
    using std::chrono::milliseconds;
    // Rounded up, so that the timer does not go off just before.
    lane.deliveryTimer.start(
        std::max(milliseconds::zero(), std::chrono::ceil<milliseconds>(*due - now())));
}

void FaultyLine::loseEverything()
{
    for (Lane &lane : m_lanes) {
        lane.stallTimer.stop();
        lane.deliveryTimer.stop();
        lane.reader = FrameReader();
        lane.queue.clear();
    }
}

DeliveryQueue::Time FaultyLine::now() const
{
    return DeliveryQueue::Time(m_clock.nsecsElapsed());
}
