# Debian packages: cpack -G DEB in a build for the prefix /usr. The Qt 5 build gives packages of its
# own for the libraries, which install beside those of Qt 6; there is one command for both.
set(CPACK_PACKAGE_CONTACT "tqxml maintainers <maintainers@tqxml.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS  # each other's libraries
    ${PROJECT_BINARY_DIR}/xml ${PROJECT_BINARY_DIR}/serverlib/embedded)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_COMPONENTS_ALL)

# debian_package(COMPONENT NAME SECTION DEPENDS SUMMARY DESCRIPTION)
function(debian_package component name section depends summary description)
    string(TOUPPER ${component} key)
    set(values
        CPACK_DEBIAN_${key}_PACKAGE_NAME ${name}
        CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section}
        CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${depends}"
        CPACK_DEBIAN_${key}_DESCRIPTION "${summary}\n${description}"
    )
    while(values)
        list(POP_FRONT values variable value)
        set(${variable} "${value}" PARENT_SCOPE)
    endwhile()
    set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
    install(FILES copyright ${CMAKE_CURRENT_BINARY_DIR}/changelog
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

set(dash "")
if(TQXML_SUFFIX)
    set(dash "-")
endif()
set(library libtqxml${TQXML_SUFFIX}${dash}${PROJECT_VERSION_MAJOR})
set(server libtqserver${TQXML_SUFFIX}${dash}1)
set(qt libqt${QT_VERSION_MAJOR})

debian_package(libtqxml ${library} libs "${server} (>= ${PROJECT_VERSION})"
    "XML vocabulary and packet router for print production"
    "Carries items of a publishing server, descriptions of user-interface actions
and pages, image references and messages as XML, in packets that are routed
between the agents of one application. One of them answers requests for server
data. This build is for Qt ${QT_VERSION_MAJOR}.")
debian_package(libtqserver ${server} libs "${qt}sql${QT_VERSION_MAJOR}-sqlite"
    "server library of libtqxml, over an SQLite or PostgreSQL store"
    "Stands below libtqxml: the connection to a store of outputs, books,
publications and page jobs, the items, and their packet text. It holds the
sample content, too. This build is for Qt ${QT_VERSION_MAJOR}.")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
foreach(key IN ITEMS LIBTQXML LIBTQSERVER)
    set(CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/triggers)
endforeach()
set(CPACK_DEBIAN_LIBTQSERVER_PACKAGE_RECOMMENDS icc-profiles-free)
set(CPACK_DEBIAN_LIBTQSERVER_PACKAGE_SUGGESTS ${qt}sql${QT_VERSION_MAJOR}-psql)

set(development qtbase5-dev)
if(QT_VERSION_MAJOR EQUAL 6)
    set(development "qt6-base-dev, qt6-5compat-dev")
endif()
set(exact "(= ${PROJECT_VERSION})")
debian_package(dev libtqxml${TQXML_SUFFIX}-dev libdevel
    "${library} ${exact}, ${server} ${exact}, ${development}"
    "XML vocabulary and packet router for print production, development files"
    "Headers, CMake package, pkg-config files and the schema of the vocabulary,
for programs that use libtqxml with Qt ${QT_VERSION_MAJOR}.")

if(TQXML_TOOLS AND QT_VERSION_MAJOR EQUAL 6)
    debian_package(tqxml tqxml utils
        "${library} (>= ${PROJECT_VERSION}), ${server} (>= ${PROJECT_VERSION})"
        "look into a publishing server's store"
        "Lists outputs, publications, books and jobs as a table or as XML, shows an
item with all that it refers to, converts packet text to XML and back, and
makes and fills stores.")
endif()

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(CONFIGURE OUTPUT changelog CONTENT
"tqxml (${PROJECT_VERSION}) unstable; urgency=medium

  * Release ${PROJECT_VERSION}; the project's CHANGELOG.md lists what changed.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/compress.cmake)
include(CPack)
