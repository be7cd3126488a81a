#pragma once

/// Gives the application the program's fonts and style sheet. Without a readable sheet the program
/// runs unstyled.
void ApplyLook();
