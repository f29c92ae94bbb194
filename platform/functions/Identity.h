#pragma once

#include <sys/types.h>

namespace kqu::platform {

/// Takes on the user as the effective one only, as seteuid(2) does. True for success.
[[nodiscard]] bool BecomeEffectively(uid_t user);

/// Becomes the user for good. True for success; otherwise nothing has changed.
///
/// The ids that a process may settle on without privileges are those that it already has as its
/// real, effective or saved one; all three become that user's. A process that has root as one of
/// the three (if only as the real and saved one, as seteuid leaves it) also takes on the user's
/// group and supplementary groups, as they are in the account database, and lets all capabilities
/// go: nothing that root had is left, and root can't be regained. Only where setting groups is
/// forbidden to root itself do the groups stay. A user without an account gets no
/// supplementary groups and the group of nobody, since a group of the same number may well be
/// somebody's. To settle on root is to stay root, groups and all.
[[nodiscard]] bool BecomeForGood(uid_t user);

} // namespace kqu::platform
