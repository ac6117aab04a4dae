# shellcheck shell=bash
# Where this machine's apt gets Debian from, for scripts that unpack packages elsewhere. They source this file.

# Prints the Debian sources that apt is configured with as lines of a sources.list. Fails, and says so, if there are none.
#
# own_sources deb|deb-src SUFFIX...      the suites: an empty suffix is the release itself, `-security` its security suite
own_sources() {
    local type=$1 release sources
    shift
    release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
    # shellcheck disable=SC2016
    sources=$(apt-get indextargets --format '$(RELEASE) $(REPO_URI) $(COMPONENT)' 'Created-By: Packages' |
        awk -v start="$type [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg]" -v suites="$(printf "$release%s " "$@")" '
            BEGIN { split(suites, names); for (i in names) wanted[names[i]] = 1 }
            $1 in wanted && $3 == "main" && !seen[$0]++ { print start, $2, $1, $3 }')
    if [[ -z $sources ]]; then
        echo "$0: apt is configured with no source of Debian's suite $release (see sources.list(5)); nothing can be fetched." >&2
        return 1
    fi
    echo "$sources"
}
