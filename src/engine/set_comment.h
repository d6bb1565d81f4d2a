// set_comment.h - the comment as it goes into a set: the date of the backup and what the user said.
#pragma once

// Replaces the user's text in gComment by the composed one; what doesn't fit its 260 characters is cut.
void ComposeComment();
