-- The tests' session manager: this machine's devices stay with their own, and nothing asks for a session bus.
alsa_monitor.enabled = false
v4l2_monitor.enabled = false
libcamera_monitor.enabled = false
default_access.properties["enable-flatpak-portal"] = false
