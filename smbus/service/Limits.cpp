// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Limits.hpp"

#include <array>

#include "smbus/Frame.hpp"

namespace SmbusService {

namespace {

constexpr uint32_t kHour = 3'600'000;  // ms
constexpr uint32_t kGibibyte = 1024 * 1024 * 1024;

constexpr std::array kTable{
    LimitRow{"connections", &Limits::connections, 1, 65536, "connections",
             "open at a time; a further one is closed at once"},
    LimitRow{"connections_per_user", &Limits::connectionsPerUser, 1, 65536, "connections",
             "open at a time from one user id"},
    LimitRow{"message_bytes", &Limits::messageBytes, 1024, SmbusFrame::kMaxMessage, "bytes",
             "in one message, either way; checked before anything is parsed"},
    LimitRow{"requests", &Limits::requests, 1, 65536, "requests",
             "in one message; counted before it is parsed"},
    LimitRow{"read_bytes", &Limits::readBytes, 32, 65535, "bytes", "that one read may ask for"},
    LimitRow{"retries", &Limits::retries, 0, 1000, "retries",
             "of one transaction; a client that asks for more gets this many"},
    LimitRow{"frame_ms", &Limits::frameMs, 10, kHour, "ms",
             "for a frame once begun; an idle connection stays open"},
    LimitRow{"send_ms", &Limits::sendMs, 10, kHour, "ms",
             "for an answer to be taken by the client"},
    LimitRow{"bus_ms", &Limits::busMs, 10, kHour, "ms",
             "to wait for a bus, and again for one operation on it, before the bus counts as hung"},
    LimitRow{"transaction_ms", &Limits::transactionMs, 10, kHour, "ms",
             "for a transaction with its retries; no operation or retry is begun later"},
    LimitRow{"stop_ms", &Limits::stopMs, 10, kHour, "ms",
             "for transactions under way to end when the service is stopped"},
    LimitRow{"record_bytes", &Limits::recordBytes, 64 * 1024, kGibibyte, "bytes",
             "in the recording, both of its files together; the older half goes first"},
    LimitRow{"record_queue_bytes", &Limits::recordQueueBytes, 64 * 1024, kGibibyte, "bytes",
             "that wait in memory to be recorded; what does not fit is missing in the recording"},
    LimitRow{"log_lines", &Limits::logLines, 1, 65536, "lines",
             "in the log in one second, errors apart; then the number of those left out"},
    LimitRow{"control_connections", &Limits::controlConnections, 1, 1024, "connections",
             "open at a time at the control socket"},
    LimitRow{"control_line_bytes", &Limits::controlLineBytes, 1024, 16 * 1024 * 1024, "bytes",
             "in one line at the control socket"},
};

}  // namespace

std::span<const LimitRow> limitTable() { return kTable; }

}  // namespace SmbusService
