message(STATUS "placeholder")
