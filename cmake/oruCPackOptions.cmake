# Read by cpack before it builds packages (CPACK_PROJECT_CONFIG_FILE).  A
# Debian description's first line is the package's own summary: each
# component's description starts with it, so the project-wide summary must
# not be put in front of them.
unset(CPACK_PACKAGE_DESCRIPTION_SUMMARY)
