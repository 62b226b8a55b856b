// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#define FUSE_USE_VERSION 314
#include <fuse_lowlevel.h>

#include <cerrno>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "platform/userfs/gm_user_file_system_delegate.h"
#include "platform/userfs/kernel_caches.h"
#include "platform/userfs/mount_options.h"
#include "platform/userfs/node_table.h"

namespace kelvane::userfs {

/// An open file of the volume: what the kernel holds as its file handle.
struct OpenFile {
  Node* node = nullptr;
  std::unique_ptr<UserData> userData;
  uint64_t contentEpoch = 0;  ///< Volume::contentEpoch_ when the user data was last right.
  OpenFile* next = nullptr;   ///< The node's other open files.
  bool isKeeper = false;      ///< Ours, so that a replaced item can still be opened.
};

/// An open directory: its names as they were when the reading began.
struct OpenDirectory {
  Node* node = nullptr;
  std::vector<std::string> names;
};

/// An item as the volume shows it.
struct Item {
  struct stat status = {};
  ItemOrigin origin = ItemOrigin::Writable;

  bool isDirectory() const { return S_ISDIR(status.st_mode); }
  bool isLink() const { return S_ISLNK(status.st_mode); }
  bool isReadOnly() const { return origin == ItemOrigin::ReadOnly; }
};

/// Answers the kernel's requests from the delegate.
///
/// One function a request, which replies exactly once. Used on the file system's thread alone. The
/// functions that return an int return 0 or an errno number.
class Volume {
 public:
  Volume(GMUserFileSystemDelegate* delegate, const MountOptions& options,
         KernelCaches::NameInvalidation nameInvalidation);
  ~Volume();
  Volume(const Volume&) = delete;
  Volume& operator=(const Volume&) = delete;

  /// The functions below as libfuse wants them; the user data of the session is the Volume.
  static const fuse_lowlevel_ops& operations();

  KernelCaches& caches() { return caches_; }
  bool isInitialised() const { return isInitialised_; }
  /// Ends what programs left open, when the kernel asks nothing any more.
  void releaseEverything();

  void init(fuse_conn_info* connection);
  void lookup(fuse_req_t request, fuse_ino_t parent, const char* name);
  void forget(fuse_ino_t number, uint64_t count);
  void getattr(fuse_req_t request, fuse_ino_t number);
  void setattr(fuse_req_t request, fuse_ino_t number, const struct stat& wanted, int which);
  void statfs(fuse_req_t request);

  void open(fuse_req_t request, fuse_ino_t number, fuse_file_info* info);
  void create(fuse_req_t request, fuse_ino_t parent, const char* name, mode_t mode,
              fuse_file_info* info);
  void mknod(fuse_req_t request, fuse_ino_t parent, const char* name, mode_t mode);
  void read(fuse_req_t request, size_t size, off_t offset, fuse_file_info* info);
  void write(fuse_req_t request, const char* buffer, size_t size, off_t offset,
             fuse_file_info* info);
  void release(fuse_req_t request, fuse_file_info* info);
  void fsync(fuse_req_t request, int onlyData, fuse_file_info* info);
  void fallocate(fuse_req_t request, int mode, off_t offset, off_t length, fuse_file_info* info);
  void lseek(fuse_req_t request, off_t offset, int whence, fuse_file_info* info);

  void opendir(fuse_req_t request, fuse_ino_t number, fuse_file_info* info);
  void readdirplus(fuse_req_t request, size_t size, off_t offset, fuse_file_info* info);
  void releasedir(fuse_req_t request, fuse_file_info* info);
  void mkdir(fuse_req_t request, fuse_ino_t parent, const char* name, mode_t mode);
  void rmdir(fuse_req_t request, fuse_ino_t parent, const char* name);

  void unlink(fuse_req_t request, fuse_ino_t parent, const char* name);
  void rename(fuse_req_t request, fuse_ino_t parent, const char* name, fuse_ino_t newParent,
              const char* newName, unsigned flags);
  void symlink(fuse_req_t request, const char* text, fuse_ino_t parent, const char* name);
  void readlink(fuse_req_t request, fuse_ino_t number);

  void setxattr(fuse_req_t request, fuse_ino_t number, const char* name, const char* value,
                size_t size, int flags);
  void getxattr(fuse_req_t request, fuse_ino_t number, const char* name, size_t size);
  void listxattr(fuse_req_t request, fuse_ino_t number, size_t size);
  void removexattr(fuse_req_t request, fuse_ino_t number, const char* name);

 private:
  /// A rename under way.
  struct Move {
    Node* parent;
    std::string name;
    Node* newParent;
    std::string newName;
    std::string from;
    std::string to;
    Item source;
    std::optional<Item> target;
  };

  // Lookup (volume_lookup.cpp).
  std::optional<Item> itemAt(const std::string& path);
  std::optional<Item> namelessItemAt(const std::string& path);
  std::optional<Item> itemOf(Node* node);
  std::optional<Item> itemAtUnlessKnownMissing(const std::string& path);
  int checkName(const Node* parent, std::string_view name) const;
  static bool isTooLong(const std::string& path);
  int checkFree(const Node* parent, const char* name);
  Node* nodeFor(Node* parent, std::string_view name, const Item& item);
  void show(Node* node, const Item& item, struct stat* shown);
  fuse_entry_param entryFor(Node* node, const Item& item);
  void replyEntry(fuse_req_t request, Node* parent, const char* name, const Item& item);
  void replyItemAt(fuse_req_t request, Node* parent, const char* name);

  // What every request that makes an item says beforehand (volume_lookup.cpp).
  void itemsMayAppear() { missingPath_.clear(); }

  // Changes of content that the kernel or an open file could miss (volume.cpp).
  void parentsBecameWritable(Node* parent);
  void contentMayHaveMoved() { ++contentEpoch_; }
  void itemWasHidden() { mayHideItems_ = true; }

  // Attributes (volume_attributes.cpp).
  int setOpenFileAttributes(const OpenFile& file, const AttributeChanges& changes);
  int setItemAttributes(Node* node, AttributeChanges changes);
  int setReadOnlyItemAttributes(Node* node, const Item& item, AttributeChanges changes);
  int shadowDirectory(const std::string& path, const Item& item, AttributeChanges changes);
  void rememberRootAttributes(AttributeChanges* changes);
  int applyAttributes(const std::string& path, const AttributeChanges& changes);

  // Open files (volume_open_files.cpp).
  int openNode(Node* node, int flags, std::unique_ptr<UserData>* userData);
  int createAt(Node* parent, const std::string& path, mode_t permissions,
               std::unique_ptr<UserData>* userData);
  int emptyReadOnlyFile(Node* node, const Item& item, std::unique_ptr<UserData>* userData);
  int openReplaced(const Node& node, int flags, std::unique_ptr<UserData>* userData);
  OpenFile* keepReplaced(const Move& move);
  OpenFile* makeOpenFile(Node* node, std::unique_ptr<UserData> userData);
  void closeOpenFile(OpenFile* file);
  void refresh(OpenFile* file);

  // Directories (volume_directories.cpp).
  void takeNames(OpenDirectory* directory);
  size_t addDot(fuse_req_t request, char* buffer, size_t size, size_t index);
  size_t addEntry(fuse_req_t request, char* buffer, size_t size, OpenDirectory& directory,
                  const std::string& path, size_t index);
  int checkEmpty(const std::string& path);
  int removeDirectoryAt(const std::string& path);

  // Links (volume_links.cpp).
  int createVisibleLink(const std::string& path, const std::string& text);
  int removeAt(const std::string& path);
  int unlinkAt(const std::string& path, const Node* known);

  // Renaming (volume_rename.cpp) and what follows it (volume_moved_tree.cpp).
  int checkMove(Move& move, unsigned flags);
  int carryOut(const Move& move);
  bool isMisjudgedLink(const Move& move);
  int moveAt(const std::string& from, const std::string& to);
  int moveOver(const Move& move);
  int makeLinkAnew(const Move& move);
  int setLinkTargetAside(const Move& move, std::string* aside, std::string* asideText);
  void putLinkTargetBack(const Move& move, const std::string& aside, const std::string& asideText);
  void settleNodes(const Move& move);
  void forgetListingsBelow(const Node* directory);
  std::string temporaryPathBeside(const std::string& path);
  std::unordered_set<std::string> itemsBelow(const std::string& directory);
  void settleMovedTree(const std::string& directory, const std::string& below,
                       const std::unordered_set<std::string>* visibleBefore);

  GMUserFileSystemDelegate* delegate_;
  NodeTable nodes_;
  KernelCaches caches_;
  double missingNameLifetime_;
  bool isInitialised_ = false;
  bool mayHideItems_ = false;  // Something was removed or moved: paths may be hidden.
  std::string missingPath_;    // Looked up last in vain; nothing was made or moved since.
  uint64_t contentEpoch_ = 0;  // Counts events after which a read-only open file may be outdated.
  uint64_t lastNamelessInode_ = 0;
  uint64_t lastTemporaryName_ = 0;
  timespec mountTime_ = {};
  AttributeChanges shownOfRoot_;  // Permissions and owners that were set and are only shown.
  std::set<OpenFile*> openFiles_;
  std::set<OpenDirectory*> openDirectories_;
};

/// What went wrong below during the request that is being answered, as far as programs must hear of
/// it: errno, which is 0 when a request begins, where it says that something broke or ran out. Many
/// operations of the delegate cannot say so themselves, and what cannot be read is not missing.
inline int failureBelow() {
  switch (errno) {
    case EACCES:
    case EIO:
    case ENOSPC:
    case EDQUOT:
    case EMFILE:
    case ENFILE:
    case ENOMEM:
      return errno;
    default:
      return 0;
  }
}

/// To move an item there is to delete it, as the delegate sees it.
inline constexpr char kTrash[] = "/.Trashes";

/// The error number of a delegate operation that failed: the one it has set, that of a failure
/// below, or `otherwise`.
inline int numberOf(const PosixError& error, int otherwise) {
  if (error.isSet()) return error.code;
  const int below = failureBelow();
  return below != 0 ? below : otherwise;
}

}  // namespace kelvane::userfs
