// A GTK 4 game loop. GTK 4 draws the window's decorations itself.
#include <gtk/gtk.h>

static int frame;

static void drawFrame(GtkDrawingArea* area, cairo_t* cairo, int width, int height, gpointer data) {
  (void)area;
  (void)height;
  (void)data;
  cairo_set_source_rgb(cairo, 0.1, 0.4, 0.3);
  cairo_paint(cairo);
  cairo_set_source_rgb(cairo, 0.6, 0.2, 0.1);
  cairo_rectangle(cairo, frame * 4 % width, 40, 80, 80);
  cairo_fill(cairo);
}

static gboolean nextFrame(gpointer area) {
  ++frame;
  gtk_widget_queue_draw(area);
  return TRUE;
}

static void open(GtkApplication* application, gpointer data) {
  (void)data;
  GtkWidget* window = gtk_application_window_new(application);
  GtkWidget* bar = gtk_header_bar_new();
  gtk_window_set_titlebar(GTK_WINDOW(window), bar);
  gtk_window_set_title(GTK_WINDOW(window), "hosts-gtk4");
  gtk_window_set_default_size(GTK_WINDOW(window), 640, 480);
  GtkWidget* area = gtk_drawing_area_new();
  gtk_drawing_area_set_draw_func(GTK_DRAWING_AREA(area), drawFrame, NULL, NULL);
  gtk_window_set_child(GTK_WINDOW(window), area);
  g_timeout_add(33, nextFrame, area);
  gtk_window_present(GTK_WINDOW(window));
}

int main(int argc, char** argv) {
  GtkApplication* application = gtk_application_new(NULL, G_APPLICATION_NON_UNIQUE);
  g_signal_connect(application, "activate", G_CALLBACK(open), NULL);
  return g_application_run(G_APPLICATION(application), argc, argv);
}
