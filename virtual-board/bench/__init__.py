"""The bench around the virtual board: whatever plugs into it, touches it and looks at it."""
