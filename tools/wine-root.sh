# Where Wine lives, for tools/setup which makes it and tools/wine-run which runs it.

zat_cache=${ZAT_CACHE:-${XDG_CACHE_HOME:-${HOME:-/root}/.cache}/zat}

# The architectures that ./check runs Windows programs of.
wine_architectures=(i386 amd64)

# Raise this when make_wine_root changes: directories made by an older one are then made again.
wine_recipe=1

wine_root() {
    echo "$zat_cache/wine-$1"
}

wine_root_is_ready() {
    local recipe
    { read -r recipe <"$zat_cache/wine-$1/recipe"; } 2>/dev/null && [[ $recipe == "$wine_recipe" ]]
}
