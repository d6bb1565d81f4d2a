// demonstration_databases.h - databases for a fresh device: contacts, appointments, tasks, the same on every device.
#pragma once

namespace platform::device {

// Makes them in the open object store. False if they can't be written.
[[nodiscard]] bool fillDemonstrationDatabases();

}  // namespace platform::device
