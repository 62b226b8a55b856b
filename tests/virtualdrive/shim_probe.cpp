// SPDX-License-Identifier: GPL-2.0-or-later
// A program of the tests that knows nothing of the emulated drive: run with the drive before it, it
// asks the C library about /dev/sr0 in every way and prints what is not as with a real drive. The
// exit status counts the complaints.
#include <fcntl.h>
#include <linux/cdrom.h>
#include <linux/fs.h>
#include <mntent.h>
#include <scsi/scsi_ioctl.h>
#include <scsi/sg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <string>

namespace {

constexpr unsigned long kGetIdLun =
    0x5382;  // SCSI_IOCTL_GET_IDLUN, which is in the kernel's own headers only
constexpr const char* kDevice = "/dev/sr0";
int complaints = 0;

void expect(bool holds, const char* what) {
  if (holds) return;
  printf("%s (errno %d)\n", what, errno);
  ++complaints;
}

bool isDrive(const struct stat& status) {
  return S_ISBLK(status.st_mode) && major(status.st_rdev) == 11 && minor(status.st_rdev) == 0;
}

void probeNames() {
  struct stat status {};
  expect(stat(kDevice, &status) == 0 && isDrive(status), "stat");
  expect(lstat(kDevice, &status) == 0 && isDrive(status), "lstat");
  expect(fstatat(AT_FDCWD, kDevice, &status, 0) == 0 && isDrive(status), "fstatat");
  struct statx extended {};
  expect(statx(AT_FDCWD, kDevice, 0, STATX_BASIC_STATS, &extended) == 0 &&
             S_ISBLK(extended.stx_mode) && extended.stx_rdev_major == 11,
         "statx");
  expect(access(kDevice, R_OK | W_OK) == 0, "access");
  expect(access(kDevice, X_OK) != 0, "access for execution");
  expect(faccessat(AT_FDCWD, kDevice, R_OK, 0) == 0, "faccessat");
  char buffer[64];
  expect(readlink(kDevice, buffer, sizeof buffer) == -1 && errno == EINVAL, "readlink");
  char* resolved = realpath(kDevice, nullptr);
  expect(resolved != nullptr && strcmp(resolved, kDevice) == 0, "realpath");
  free(resolved);
}

void probeDescriptor(int drive, const char* how) {
  struct stat status {};
  expect(drive >= 0, how);
  expect(fstat(drive, &status) == 0 && isDrive(status), how);
  uint64_t size = 0;
  expect(ioctl(drive, BLKGETSIZE64, &size) == 0 && size > 0 && size % 2048 == 0, how);
}

void probeWaysToOpen() {
  const int one = open(kDevice, O_RDWR | O_NONBLOCK);
  probeDescriptor(one, "open");
  const int two = openat(AT_FDCWD, kDevice, O_RDONLY);
  probeDescriptor(two, "openat");
  const int three = open(kDevice, O_RDWR | O_NONBLOCK | O_EXCL);
  probeDescriptor(three, "open for nobody else");
  close(three);
  FILE* stream = fopen(kDevice, "rb");
  expect(stream != nullptr, "fopen");
  if (stream != nullptr) {
    probeDescriptor(fileno(stream), "fopen's descriptor");
    fclose(stream);
  }
  const int copy = dup(one);
  probeDescriptor(copy, "dup");
  const int again = open(("/dev/fd/" + std::to_string(one)).c_str(), O_RDONLY);
  probeDescriptor(again, "/dev/fd/N");
  struct stat status {};
  expect(stat(("/proc/self/fd/" + std::to_string(one)).c_str(), &status) == 0 && isDrive(status),
         "stat of /proc/self/fd/N");
  for (const int descriptor : {one, two, copy, again}) close(descriptor);
}

void probeWritingAround() {
  const int drive = open(kDevice, O_RDWR);
  expect(write(drive, "x", 1) == -1, "write(2) is refused");
  expect(ftruncate(drive, 0) == -1, "ftruncate is refused");
  close(drive);
  const int truncated = open(kDevice, O_RDWR | O_TRUNC | O_CREAT, 0600);
  expect(lseek(truncated, 0, SEEK_END) > 0, "O_TRUNC takes nothing away");
  close(truncated);
}

/// Sends a command block with SG_IO; the sense key, or -1 where the request itself failed.
int send(int drive, const unsigned char* block, unsigned char length, void* data, unsigned size) {
  unsigned char sense[18] = {};
  sg_io_hdr header{};
  header.interface_id = 'S';
  header.dxfer_direction = size > 0 ? SG_DXFER_FROM_DEV : SG_DXFER_NONE;
  header.cmd_len = length;
  header.mx_sb_len = sizeof sense;
  header.dxfer_len = size;
  header.dxferp = data;
  header.cmdp = const_cast<unsigned char*>(block);
  header.sbp = sense;
  header.timeout = 1000;
  if (ioctl(drive, SG_IO, &header) != 0) return -1;
  if (header.status == 0) return 0;
  expect(header.status == 2 && header.sb_len_wr == sizeof sense, "status and sense go together");
  return sense[2] & 0x0F;
}

void probePassThrough(int drive) {
  unsigned char ready[6] = {};
  send(drive, ready, 6, nullptr, 0);  // takes the news of the medium
  expect(send(drive, ready, 6, nullptr, 0) == 0, "TEST UNIT READY");
  unsigned char data[96] = {};
  const unsigned char inquiry[6] = {0x12, 0, 0, 0, sizeof data, 0};
  expect(send(drive, inquiry, 6, data, sizeof data) == 0 && data[0] == 5, "INQUIRY");
  const unsigned char unknown[6] = {0x02};
  expect(send(drive, unknown, 6, nullptr, 0) == 5, "an unknown command is illegal");
  sg_io_hdr wrong{};
  wrong.interface_id = 'Q';
  expect(ioctl(drive, SG_IO, &wrong) == -1 && errno == EINVAL, "another interface");
}

void probeControls(int drive) {
  int number = -1;
  uint32_t identity[2] = {9, 9};
  expect(ioctl(drive, kGetIdLun, identity) == 0, "SCSI_IOCTL_GET_IDLUN");
  expect(ioctl(drive, SG_GET_VERSION_NUM, &number) == 0 && number >= 30000, "SG_GET_VERSION_NUM");
  expect(ioctl(drive, BLKSSZGET, &number) == 0 && number == 2048, "BLKSSZGET");
  expect(ioctl(drive, BLKFLSBUF, 0) == 0, "BLKFLSBUF");
  expect(ioctl(drive, CDROM_DRIVE_STATUS, CDSL_CURRENT) == CDS_DISC_OK, "CDROM_DRIVE_STATUS");
  expect(ioctl(drive, CDROM_DISC_STATUS, 0) == CDS_DATA_1, "CDROM_DISC_STATUS");
  expect((ioctl(drive, CDROM_GET_CAPABILITY, 0) & CDC_CD_R) != 0, "CDROM_GET_CAPABILITY");
  cdrom_tochdr header{};
  expect(ioctl(drive, CDROMREADTOCHDR, &header) == 0 && header.cdth_trk1 == 1, "CDROMREADTOCHDR");
  cdrom_tocentry entry{};
  entry.cdte_track = CDROM_LEADOUT;
  entry.cdte_format = CDROM_LBA;
  expect(ioctl(drive, CDROMREADTOCENTRY, &entry) == 0 && entry.cdte_addr.lba > 300,
         "CDROMREADTOCENTRY");
  cdrom_multisession session{};
  session.addr_format = CDROM_LBA;
  expect(ioctl(drive, CDROMMULTISESSION, &session) == 0 && session.addr.lba == 0,
         "CDROMMULTISESSION");
  expect(ioctl(drive, 0x30d, &number) == -1 && errno == ENOTTY, "requests of other devices");
  expect(ioctl(drive, CDROM_LOCKDOOR, 1) == 0, "CDROM_LOCKDOOR");
  expect(ioctl(drive, CDROMEJECT, 0) == -1 && errno == EBUSY, "CDROMEJECT of a locked tray");
  expect(ioctl(drive, CDROM_LOCKDOOR, 0) == 0, "unlocking");
  expect(ioctl(drive, CDROMEJECT, 0) == 0, "CDROMEJECT");
  expect(ioctl(drive, CDROM_DRIVE_STATUS, CDSL_CURRENT) == CDS_TRAY_OPEN, "open tray");
  expect(open(kDevice, O_RDONLY) == -1 && errno == ENOMEDIUM, "open without a medium");
  const int patient = open(kDevice, O_RDONLY | O_NONBLOCK);
  expect(patient >= 0, "open without a medium, not minding");
  close(patient);
  expect(ioctl(drive, CDROMCLOSETRAY, 0) == 0, "CDROMCLOSETRAY");
  expect(ioctl(drive, CDROM_DRIVE_STATUS, CDSL_CURRENT) == CDS_DISC_OK, "closed tray");
}

/// Whether another process gets the record lock on the drive.
bool otherProcessLocks(short type) {
  const pid_t child = fork();
  if (child == 0) {
    const int drive = open(kDevice, O_RDWR | O_NONBLOCK);
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    _exit(fcntl(drive, F_SETLK, &lock) == 0 ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return status == 0;
}

void probeLocks(int drive) {
  expect(otherProcessLocks(F_WRLCK), "a free drive is locked by who comes");
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  expect(fcntl(drive, F_SETLK, &lock) == 0, "F_SETLK");
  expect(fcntl(drive, F_SETLK, &lock) == 0, "F_SETLK again");
  expect((fcntl(drive, F_GETFL) & O_ACCMODE) == O_RDONLY, "other uses of fcntl work");
  lock.l_type = F_UNLCK;
  expect(fcntl(drive, F_SETLK, &lock) == 0, "unlocking");
  expect(otherProcessLocks(F_WRLCK), "an unlocked drive is free");
}

/// Another disc's mount must not be taken for one of the drive's.
void probeMountTable() {
  const char* table = getenv("KELVANE_PROBE_MOUNTS");
  if (table == nullptr) return;
  FILE* stream = setmntent(table, "r");
  expect(stream != nullptr, "setmntent");
  if (stream == nullptr) return;
  const mntent* entry = getmntent(stream);
  expect(entry != nullptr && strcmp(entry->mnt_dir, "/other") == 0, "getmntent");
  expect(getmntent(stream) == nullptr, "the drive's own name is left out");
  rewind(stream);
  mntent room{};
  char text[256];
  entry = getmntent_r(stream, &room, text, sizeof text);
  expect(entry != nullptr && strcmp(entry->mnt_dir, "/other") == 0, "getmntent_r");
  expect(getmntent_r(stream, &room, text, sizeof text) == nullptr, "left out there too");
  endmntent(stream);
}

}  // namespace

int main() {
  probeNames();
  probeWaysToOpen();
  probeWritingAround();
  const int drive = open(kDevice, O_RDWR | O_NONBLOCK);
  probePassThrough(drive);
  probeControls(drive);
  probeLocks(drive);
  probeMountTable();
  return complaints;
}
