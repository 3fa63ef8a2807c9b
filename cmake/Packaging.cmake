# The Debian package: `cpack -G DEB` in a build folder makes plattmix_VERSION_ARCH.deb from the
# install rules, under /usr. The programs find their language files and the fall-back transport's
# layer relative to their own folder, so any build folder makes a working package. The linked
# libraries become Depends through dpkg-shlibdeps (package dpkg-dev); what the program uses
# without linking it is listed here.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME plattmix)
set(CPACK_PACKAGE_VENDOR Trovalis)
set(CPACK_PACKAGE_CONTACT "Plattmix maintainers <maintainers@users.noreply.c-seed-1a7a919f.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Rip audio CDs, build ISO images and burn discs")
set(CPACK_PACKAGE_DESCRIPTION
    "A tool for optical discs with a German interface, part of the Trovalis suite: rip audio CDs
to WAV, MP3, MP4 (AAC), MP2, FLAC, AC3 or WMA, build ISO images from folders, burn
compilations (multisession too) and ISO images, erase rewritable discs and attach ISO images
as drives. The window is plattmix, the command line plattmix-cli.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION otherosfs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Qt's own German texts (qtbase_de.qm); udisks2, which attaches images as drives for users who
# are not root; the fonts the window is laid out in (Wine's Tahoma, Liberation Sans for Arial).
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-translations-l10n, udisks2, fonts-wine, fonts-liberation2")

include(CPack)
