# Sources that don't go into one piece with others, since another one has the same local names. Without their folder.
set(onvif_alone ConfigurationMotion.cpp Contacts.cpp Decoders.cpp Fetch.cpp Imaging.cpp ImagingWords.cpp PTZTours.cpp
                Rotation.cpp Voice.cpp)
