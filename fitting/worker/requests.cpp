// SPDX-License-Identifier: MIT
// Moves requests and answers through descriptors.
#include "worker/requests.h"

#include <cerrno>
#include <stdexcept>
#include <unistd.h>

static constexpr std::int32_t LargestCount = 1 << 20;  // of anything in a request
static constexpr std::size_t TypeFields = sizeof(TypeRecord) / sizeof(double);

// Reads exactly so many bytes; false if the stream ends before the last of them.
static bool ReadBytes(int descriptor, void* bytes, std::size_t count) {
    char* next = static_cast<char*>(bytes);
    while (count > 0) {
        const ssize_t got = read(descriptor, next, count);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return false;
        }
        next += got;
        count -= static_cast<std::size_t>(got);
    }
    return true;
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
    if (count < 0 || count > LargestCount) {
        throw std::runtime_error("a request has a count that can't be");
    }
    records.resize(static_cast<std::size_t>(count));
    if (!ReadBytes(descriptor, records.data(), records.size() * sizeof(Record))) {
        throw std::runtime_error("the requests end within one");
    }
}

static bool Within(std::int32_t place, std::size_t count) {
    return place >= 0 && static_cast<std::size_t>(place) < count;
}

static void CheckPlaces(const Request& request) {
    if (request.Head.Quantity != ShieldingRequest && request.Head.Quantity != CouplingRequest) {
        throw std::runtime_error("a request asks for an unknown quantity");
    }
    if (!Within(request.Head.VariantCount, LargestCount)) {
        throw std::runtime_error("a request has a count that can't be");
    }
    for (const RequestAtom& atom : request.Atoms) {
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
    if (!ReadBytes(descriptor, &request.Head, sizeof request.Head)) {
        return false;
    }
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
    return ReadBytes(descriptor, &answer.Status, sizeof answer.Status) &&
           ReadBytes(descriptor, answer.Values.data(), valueCount * sizeof(double));
}
