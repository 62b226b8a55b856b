// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/recorder/image_source.h"

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <utility>

#include <libburn/libburn.h>

#include <algorithm>

namespace kelvane::recorder {
namespace {

constexpr uint32_t kBlockBytes = 2048;

// libburn asks for a block at a time. A system call for each took a fifth of the processor time.
constexpr size_t kBufferBytes = 64 * 1024;

// What belongs to one source. The producer would start again from its beginning; a track is
// delivered once.
class Stream {
 public:
  Stream(std::unique_ptr<DRTrackProducer> producer, int64_t size)
      : producer_(std::move(producer)), size_(size) {}

  int64_t size() const { return size_; }

  // Like read(2), but only the last buffer may be incomplete.
  int read(char* target, int length) {
    const auto wanted = static_cast<size_t>(std::min<int64_t>(length, size_ - delivered_));
    for (size_t done = 0; done < wanted;) {
      if (next_ == filled_ && !fill()) return -1;
      const size_t count = std::min(wanted - done, filled_ - next_);
      std::memcpy(target + done, buffer_.data() + next_, count);
      next_ += count;
      done += count;
      delivered_ += static_cast<int64_t>(count);
    }
    return static_cast<int>(wanted);
  }

  void close() { producer_->cleanupTrackAfterBurn(nullptr); }

 private:
  bool fill() {
    const int64_t left = size_ - delivered_;
    const auto length = static_cast<uint32_t>(std::min<int64_t>(left, kBufferBytes));
    next_ = 0;
    filled_ = producer_->produceDataForTrack(nullptr, buffer_.data(), length,
                                             static_cast<uint64_t>(delivered_ / kBlockBytes),
                                             kBlockBytes, nullptr);
    return filled_ > 0;
  }

  std::unique_ptr<DRTrackProducer> producer_;
  int64_t size_;
  int64_t delivered_ = 0;
  std::array<char, kBufferBytes> buffer_{};
  size_t next_ = 0;
  size_t filled_ = 0;
};

Stream& streamOf(burn::burn_source* source) {
  return *static_cast<Stream*>(source->data);
}

int readStream(burn::burn_source* source, unsigned char* buffer, int size) {
  return streamOf(source).read(reinterpret_cast<char*>(buffer), size);
}

off_t sizeOfStream(burn::burn_source* source) {
  return streamOf(source).size();
}

int setSizeOfStream(burn::burn_source*, off_t) {
  return 1;
}

void freeStream(burn::burn_source* source) {
  Stream* stream = &streamOf(source);
  stream->close();
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
  source->data = new Stream(std::move(producer), size);
  return SourceReference(source);
}

}  // namespace kelvane::recorder
