/* Takes a picture of what each channel of a device shows.

     snapshots PROTOCOL ADDRESS [USER]

   Leaves channel-0.png, channel-1.png and so on in the present folder. */

#include "Tour.h"

/* How many pictures were taken; -1: one could not be. */
static int TakePictures(int nLogin)
{
    for (int i = 0;; ++i)
    {
        tagImageFileInfo tPicture = {.dwSize = sizeof tPicture, .dwWidth = 640}; /* at most so wide */
        int nResult;
        snprintf(tPicture.szPath, sizeof tPicture.szPath, "channel-%d.png", i);
        nResult = ClientAdapter_ImageCapture(nLogin, (unsigned long)i, eImagePng, &tPicture);
        if (nResult == eResultNoChannel)
        {
            return i;
        }
        if (!Worked(nResult, "taking a picture"))
        {
            return -1;
        }
        printf("%s: %" PRIu32 "x%" PRIu32 " pixels.\n", tPicture.szPath, tPicture.dwWidth, tPicture.dwHeight);
    }
}

int main(int nArguments, char** aszArguments)
{
    const int nLogin = BeginTour(nArguments, aszArguments);
    return EndTour(nLogin, nLogin != -1 && Expect(TakePictures(nLogin) > 0, "there is a channel"));
}
