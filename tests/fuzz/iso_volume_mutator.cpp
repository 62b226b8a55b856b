// SPDX-License-Identifier: GPL-2.0-or-later
// How the fuzzer changes a disc: mostly one block, or a number in it, and the rest stays a disc.
#include <algorithm>
#include <cstring>
#include <random>

#include "fuzz/sparse_image.h"
#include "helpers/isovolume/block_source.h"

extern "C" {
// Of libFuzzer, and what it asks for.
std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t mostSize);
std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t mostSize,
                                    unsigned seed);
}

namespace kelvane::fuzz {
namespace {

using Random = std::minstd_rand;

std::size_t below(std::size_t count, Random* random) {
  return std::uniform_int_distribution<std::size_t>(0, count - 1)(*random);
}

void changeBytes(SparseBlock* block) {
  std::vector<std::uint8_t>& content = block->content;
  const std::size_t size = content.size();
  content.resize(isovolume::kBlockSize);
  content.resize(LLVMFuzzerMutate(content.data(), size, content.size()));
}

/// Writes the number of a block of the disc somewhere, in both byte orders as the standard has it:
/// that is how loops and overlaps arise.
void redirect(SparseBlock* block, std::uint64_t number, Random* random) {
  std::vector<std::uint8_t>& content = block->content;
  if (content.size() < 8) return;
  std::uint8_t* place = content.data() + below(content.size() - 7, random);
  for (unsigned byte = 0; byte < 4; ++byte) {
    place[byte] = place[7 - byte] = static_cast<std::uint8_t>(number >> 8 * byte);
  }
}

/// Copies a piece of one block over a piece of another, as records are alike in shape.
void splice(const SparseBlock& from, SparseBlock* to, Random* random) {
  if (from.content.empty() || to->content.empty()) return;
  const std::size_t source = below(from.content.size(), random);
  const std::size_t target = below(to->content.size(), random);
  const std::size_t most = std::min(from.content.size() - source, to->content.size() - target);
  const std::size_t length = 1 + below(most, random);
  std::memmove(to->content.data() + target, from.content.data() + source, length);
}

void change(SparseImage* image, Random* random) {
  const std::size_t count = image->blocks.size();
  SparseBlock& block = image->blocks[below(count, random)];
  const SparseBlock& other = image->blocks[below(count, random)];
  switch (below(16, random)) {
    case 0:
      block.readable = !block.readable;
      break;
    case 1:
      block.content = other.content;
      break;
    case 2:
      image->blocks.resize(below(count, random) + 1);
      break;  // A truncated image.
    case 3:
      splice(other, &block, random);
      break;
    case 4:
    case 5:
      redirect(&block, other.number, random);
      break;
    default:
      changeBytes(&block);
  }
}

}  // namespace
}  // namespace kelvane::fuzz

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t mostSize,
                                    unsigned seed) {
  using namespace kelvane::fuzz;
  Random random(seed);
  SparseImage image = SparseImage::decode({data, size});
  if (image.blocks.empty() || below(16, &random) == 0) {
    return LLVMFuzzerMutate(data, size, mostSize);
  }
  change(&image, &random);
  const std::vector<std::uint8_t> bytes = image.encode();
  if (bytes.size() > mostSize) return LLVMFuzzerMutate(data, size, mostSize);
  std::ranges::copy(bytes, data);
  return bytes.size();
}
