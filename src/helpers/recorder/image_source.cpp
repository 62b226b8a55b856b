// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/recorder/image_source.h"

#include <sys/types.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <utility>

#include <libburn/libburn.h>

#include <algorithm>

namespace kelvane::recorder {
namespace {

constexpr uint32_t kBlockBytes = 2048;

// What belongs to one source.
struct Stream {
  std::unique_ptr<DRTrackProducer> producer;
  int64_t size;
  int64_t delivered;
};

Stream& streamOf(burn::burn_source* source) {
  return *static_cast<Stream*>(source->data);
}

// Like read(2), but only the last buffer may be incomplete. The producer would start again from its
// beginning; a track is delivered once.
int readStream(burn::burn_source* source, unsigned char* buffer, int size) {
  Stream& stream = streamOf(source);
  const int64_t wanted = std::min<int64_t>(size, stream.size - stream.delivered);
  int64_t done = 0;
  while (done < wanted) {
    const uint32_t count = stream.producer->produceDataForTrack(
        nullptr, reinterpret_cast<char*>(buffer) + done, static_cast<uint32_t>(wanted - done),
        static_cast<uint64_t>((stream.delivered + done) / kBlockBytes), kBlockBytes, nullptr);
    if (count == 0) return -1;
    done += count;
  }
  stream.delivered += done;
  return static_cast<int>(done);
}

off_t sizeOfStream(burn::burn_source* source) {
  return streamOf(source).size;
}

int setSizeOfStream(burn::burn_source*, off_t) {
  return 1;
}

void freeStream(burn::burn_source* source) {
  Stream* stream = &streamOf(source);
  stream->producer->cleanupTrackAfterBurn(nullptr);
  delete stream;
}

}  // namespace

void SourceRelease::operator()(burn::burn_source* source) const {
  burn::burn_source_free(source);
}

SourceReference makeImageSource(std::unique_ptr<DRTrackProducer> producer, int64_t size) {
  producer->prepareTrack(nullptr, nullptr, nullptr);
  // libburn frees the object itself, with free().
  auto* source = static_cast<burn::burn_source*>(std::calloc(1, sizeof(burn::burn_source)));
  if (source == nullptr) return nullptr;
  source->refcount = 1;
  source->read = readStream;
  source->get_size = sizeOfStream;
  source->set_size = setSizeOfStream;
  source->free_data = freeStream;
  source->data = new Stream{std::move(producer), size, 0};
  return SourceReference(source);
}

}  // namespace kelvane::recorder
