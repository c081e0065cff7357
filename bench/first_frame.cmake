if(NOT QUILLMAR_UI)
  return()
endif()
find_package(Qt6 6.4 REQUIRED COMPONENTS Quick)

quillmar_bench(first_frame
  SOURCES first_frame.cpp
  LINK quillmar_app quillmar_ui quillmar_testing Qt6::Quick)

quillmar_bench(lists
  SOURCES lists.cpp
  LINK quillmar_ui_testing Qt6::Quick)

quillmar_bench(activity
  SOURCES activity.cpp
  LINK quillmar_ui_testing quillmar_live_memory Qt6::Quick)

quillmar_bench(resize
  SOURCES resize.cpp
  LINK quillmar_ui_testing Qt6::Quick)

quillmar_bench(texts
  SOURCES texts.cpp
  LINK quillmar_ui Qt6::Quick)
