// failing_flush.h - lets each flush to the disk fail.
#pragma once

void failFlushes(bool fail);
