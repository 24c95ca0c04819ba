// SPDX-License-Identifier: MIT
// Moves requests and answers through descriptors.
#include "worker/requests.h"

#include <cerrno>
#include <stdexcept>
#include <unistd.h>

static constexpr std::int32_t LargestCount = 1 << 20;  // of types, variants and changes
static constexpr std::size_t TypeFields = sizeof(TypeRecord) / sizeof(double);
static constexpr char EndsWithinRequest[] = "the requests end within one";

// Reads so many bytes, or fewer where the stream ends before; how many it was.
static std::size_t ReadBytes(int descriptor, void* bytes, std::size_t count) {
    std::size_t done = 0;
    while (done < count) {
        const ssize_t got = read(descriptor, static_cast<char*>(bytes) + done, count - done);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            break;
        }
        done += static_cast<std::size_t>(got);
    }
    return done;
}

static void WriteBytes(int descriptor, const void* bytes, std::size_t count) {
    const char* next = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t written = write(descriptor, next, count);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            throw std::runtime_error("an answer couldn't be written");
        }
        next += written;
        count -= static_cast<std::size_t>(written);
    }
}

template <class Record> static void ReadRecords(int descriptor, std::int32_t count, std::vector<Record>& records) {
    records.resize(static_cast<std::size_t>(count));
    const std::size_t size = records.size() * sizeof(Record);
    if (ReadBytes(descriptor, records.data(), size) != size) {
        throw std::runtime_error(EndsWithinRequest);
    }
}

static void CheckCount(std::int32_t count, std::int32_t least, std::int32_t most) {
    if (count < least || count > most) {
        throw std::runtime_error("a request has a count that can't be");
    }
}

static void CheckHead(const RequestHead& head) {
    if (head.Quantity != ShieldingRequest && head.Quantity != CouplingRequest) {
        throw std::runtime_error("a request asks for an unknown quantity");
    }
    CheckCount(head.AtomCount, 1, LargestAtomCount);
    CheckCount(head.NMRAtomCount, 0, LargestAtomCount);
    CheckCount(head.TypeCount, 1, LargestCount);
    CheckCount(head.VariantCount, 0, LargestCount);
    CheckCount(head.ChangeCount, 0, LargestCount);
}

static bool Within(std::int32_t place, std::size_t count) {
    return place >= 0 && static_cast<std::size_t>(place) < count;
}

static void CheckPlaces(const Request& request) {
    for (const RequestAtom& atom : request.Atoms) {
        if (atom.AtomicNumber < 1) {
            throw std::runtime_error("an atom of a request has an atomic number that no element has");
        }
        if (!Within(atom.Type, request.Types.size())) {
            throw std::runtime_error("an atom of a request has a type that isn't in its table");
        }
    }
    for (const std::int32_t atom : request.NMRAtoms) {
        if (!Within(atom, request.Atoms.size())) {
            throw std::runtime_error("a request selects an atom that isn't there");
        }
    }
    for (const ParameterChange& change : request.Changes) {
        if (!Within(change.Variant, static_cast<std::size_t>(request.Head.VariantCount)) ||
            !Within(change.Type, request.Types.size()) || !Within(change.Field, TypeFields)) {
            throw std::runtime_error("a request changes a parameter that isn't there");
        }
    }
}

bool ReadRequest(int descriptor, Request& request) {
    const std::size_t got = ReadBytes(descriptor, &request.Head, sizeof request.Head);
    if (got == 0) {
        return false;
    }
    if (got != sizeof request.Head) {
        throw std::runtime_error(EndsWithinRequest);
    }
    CheckHead(request.Head);
    ReadRecords(descriptor, request.Head.AtomCount, request.Atoms);
    ReadRecords(descriptor, request.Head.NMRAtomCount, request.NMRAtoms);
    ReadRecords(descriptor, request.Head.TypeCount, request.Types);
    ReadRecords(descriptor, request.Head.ChangeCount, request.Changes);
    CheckPlaces(request);
    return true;
}

std::size_t ValueCount(const Request& request) {
    return request.NMRAtoms.size() * (request.Head.Quantity == CouplingRequest ? request.Atoms.size() : 1);
}

void WriteAnswer(int descriptor, const Answer& answer) {
    WriteBytes(descriptor, &answer.Status, sizeof answer.Status);
    WriteBytes(descriptor, answer.Values.data(), answer.Values.size() * sizeof(double));
}

bool ReadAnswer(int descriptor, std::size_t valueCount, Answer& answer) {
    answer.Values.resize(valueCount);
    const std::size_t size = valueCount * sizeof(double);
    return ReadBytes(descriptor, &answer.Status, sizeof answer.Status) == sizeof answer.Status &&
           ReadBytes(descriptor, answer.Values.data(), size) == size;
}
