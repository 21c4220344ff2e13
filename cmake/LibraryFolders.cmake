# The folders of the library's sources. The scripts read the list from here.
set(LIBRARY_FOLDERS services frame tuning netconfig pages)
