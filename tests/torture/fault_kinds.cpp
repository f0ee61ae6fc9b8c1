#include "torture/fault_kinds.hpp"

#include <cerrno>

namespace vantorium::torture {

namespace {

constexpr std::uint32_t takesInode = makeFile | makeFolder;
constexpr std::uint32_t takesSpace = takesInode | write | move;
constexpr std::uint32_t takesDescriptor = makeFile | open;
constexpr std::uint32_t touchesDisk = takesSpace | open | change | lock | read | look;

}  // namespace

const std::vector<Fault>& faults() {
  static const std::vector<Fault> all = {
      {"file", "ENOSPC", ENOSPC, takesSpace, false},  // room is made at once
      {"file", "ENOSPC+", ENOSPC, takesSpace, true},  // the disk stays full
      {"file", "INODES", ENOSPC, takesInode, false},  // bytes can be written, files cannot be made
      {"file", "INODES+", ENOSPC, takesInode, true},
      {"file", "EIO", EIO, touchesDisk, false},
      {"file", "EIO+", EIO, touchesDisk & ~change, true},  // from a disk that is gone nothing can be removed
      {"file", "EMFILE", EMFILE, takesDescriptor, false},
      {"file", "EMFILE+", EMFILE, takesDescriptor | newSocket, true},  // none is to be had for anything
      {"file", "ENOMEM", ENOMEM, map, false},
      {"file", "SHORT", 0, write | read, false},
      {"socket", "EMFILE", EMFILE, newSocket, false},
      {"socket", "ENFILE", ENFILE, newSocket, false},
      {"socket", "ECONNREFUSED", ECONNREFUSED, connect, false},
      {"socket", "ETIMEDOUT", ETIMEDOUT, connect | receive, false},
      {"socket", "ECONNRESET", ECONNRESET, send | receive, false},
      {"socket", "ECONNRESET+", ECONNRESET, send | receive, true},  // the network has gone
      {"socket", "ENOBUFS", ENOBUFS, send | wake, false},
      {"socket", "ENOMEM", ENOMEM, poll, false},
      {"socket", "SHORT", 0, send | receive, false},
      {"memory", "ENOMEM", ENOMEM, allocate, false},
  };
  return all;
}

}  // namespace vantorium::torture
